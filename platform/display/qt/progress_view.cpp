// progress_view.cpp - a progress bar.

#include "view_makers.h"
#include <QProgressBar>

namespace platform::qt {

namespace {

using window::WindowState;

class BarView final : public QProgressBar, public View {
public:
    BarView(const WindowState& state, const Courier& courier, QWidget* parent)
        : QProgressBar(parent), View(state.window, courier)
    {
        setTextVisible(false);  // how far a bar that starts over has come is nothing to read
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes) override
    {
        setRange(state.progressLow, std::max(state.progressHigh, state.progressLow + 1));
        setValue(state.progressPosition);
    }

    [[nodiscard]] QRect placeIn(const QRect& place) const override
    {
        const int height = std::min(place.height(), sizeHint().height());
        QRect bar(place.x(), 0, place.width(), height);
        bar.moveCenter({bar.center().x(), place.center().y()});
        return bar;
    }
};

}  // namespace

View* makeProgressView(const WindowState& state, const Courier& courier, QWidget* parent)
{
    return new BarView(state, courier, parent);
}

}  // namespace platform::qt
