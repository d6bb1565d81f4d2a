#include "view_makers.h"
#include <QProgressBar>

namespace platform::qt {

namespace {

using window::WindowState;

class BarView final : public QProgressBar, public View {
public:
    BarView(const WindowState& state, const UserInput& input, QWidget* parent)
        : QProgressBar(parent), View(state.window, input)
    {
        setTextVisible(false);  // the bar starts again and again, so its percentage means nothing
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes) override
    {
        setRange(state.progressLow, std::max(state.progressHigh, state.progressLow + 1));
        setValue(state.progressPosition);
    }

    QRect geometryIn(const QRect& rect) const override
    {
        const int height = std::min(rect.height(), sizeHint().height());
        QRect bar(rect.x(), 0, rect.width(), height);
        bar.moveCenter({bar.center().x(), rect.center().y()});
        return bar;
    }
};

}  // namespace

View* makeProgressView(const WindowState& state, const UserInput& input, QWidget* parent)
{
    return new BarView(state, input, parent);
}

}  // namespace platform::qt
