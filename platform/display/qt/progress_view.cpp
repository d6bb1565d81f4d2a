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
        setTextVisible(
            false);  // no percentage, because the bar starts again and again while the number of items isn't known
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes) override
    {
        if (showsRun_)
            return;
        setRange(state.progressLow, std::max(state.progressHigh, state.progressLow + 1));
        setValue(state.progressPosition);
    }

    // Shows how much of the run is done, and not the position of the program's bar. For each item the program's bar
    // moves by 1,000 divided by the number of items, rounded down. So in a run of more than 1,000 items it doesn't move
    // at all.
    void followRun(const RunView& run) override
    {
        showsRun_ = run.progress.underway;
        if (!showsRun_)
            return;
        setRange(0, Thousandths);
        setValue(static_cast<int>(run.share * Thousandths));
    }

    QRect geometryIn(const QRect& rect) const override
    {
        const int height = std::min(rect.height(), sizeHint().height());
        QRect bar(rect.x(), 0, rect.width(), height);
        bar.moveCenter({bar.center().x(), rect.center().y()});
        return bar;
    }

private:
    static constexpr int Thousandths = 1000;

    bool showsRun_ = false;
};

}  // namespace

View* makeProgressView(const WindowState& state, const UserInput& input, QWidget* parent)
{
    return new BarView(state, input, parent);
}

}  // namespace platform::qt
