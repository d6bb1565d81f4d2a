// dialog_layout.cpp - computes the layout of a dialog from its template and the user's font and style. If the user
// makes the window larger, the layout grows too.
#include "dialog_view.h"

#include "header_bar.h"
#include "window_settings.h"

#include "ce/controls.h"
#include "ce/window.h"

#include <QHideEvent>
#include <QLabel>
#include <QScreen>
#include <QSizeGrip>

#include <algorithm>
#include <cmath>

namespace platform::qt {

namespace {

using window::WindowKind;
using window::WindowState;

constexpr int FrameLine = 1;
// Virtual pixels.
constexpr int BottomMargin = 6;
constexpr int RowTolerance = 3;
// The rows of text below a progress bar: items, amount, time.
constexpr int RunDetailRows = 3;
// The largest factor by which a long text makes the dialog wider. A text that needs a still wider dialog wraps or is
// cut.
constexpr double MostStretch = 1.6;
// If a dialog opens wider than least_ because its lists need the width, the dialog has at most this part of the
// screen's width.
constexpr double LargestFirstWidth = 0.6;

GrowingControl::Kind growthOf(const WindowState& state)
{
    if (state.kind == WindowKind::ListBox)
        return GrowingControl::Kind::List;
    if (state.kind == WindowKind::Edit && (state.style & ES_MULTILINE))
        return GrowingControl::Kind::Lines;
    return state.kind == WindowKind::Static ? GrowingControl::Kind::Text : GrowingControl::Kind::Fixed;
}

}  // namespace

void DialogView::arrange()
{
    DialogUnits units = dialogUnitsOf(*this);
    placeControls(units);
    units.x *= stretchFor(units);
    placeControls(units);

    // Some templates have no margin below their last control.
    const int margin = units.scaled({0, 0, 0, BottomMargin}).height();
    QRect client = units.scaled({0, 0, rect_.right - rect_.left, rect_.bottom - rect_.top});
    for (const Control& control : controls_) {
        if (control.state.visible)
            client.setBottom(std::max(client.bottom(), control.view->widget().geometry().bottom() + margin));
    }
    if (runDetails_) {
        const int height = RunDetailRows * fontMetrics().lineSpacing();
        const QRect bar = barGeometry();
        runDetails_->setGeometry(bar.left(), client.bottom(), bar.width(), height);
        client.setBottom(client.bottom() + height + margin);
    }
    const int line = header_ ? FrameLine : 0;
    const int width = std::max(client.width(), header_ ? header_->sizeHint().width() : 0);
    least_ = QSize(width, client.height() + headerHeight()) + QSize(2 * line, 2 * line);
    nameControls();
    growing_.clear();
    for (const Control& control : controls_)
        growing_.push_back({control.view->widget().geometry(), growthOf(control.state), control.state.visible});
    const QSize wanted = least_ + extra_;
    setMinimumSize(least_);
    if (canGrow(growing_))
        resize(wanted);
    else
        setFixedSize(least_);
    layOut();
}

QRect DialogView::barGeometry() const
{
    const auto bar = std::ranges::find_if(
        controls_, [](const Control& control) { return control.state.kind == WindowKind::ProgressBar; });
    return bar == controls_.end() ? QRect() : bar->view->widget().geometry();
}

int DialogView::headerHeight() const
{
    return header_ ? header_->sizeHint().height() : 0;
}

void DialogView::layOut()
{
    const int line = header_ ? FrameLine : 0;
    const QRect inside = rect().adjusted(line, line, -line, -line);
    if (header_)
        header_->setGeometry(inside.left(), inside.top(), inside.width(), headerHeight());
    content_.setGeometry(inside.adjusted(0, headerHeight(), 0, 0));
    const std::vector<QRect> rects = grown(growing_, extra_);
    for (std::size_t at = 0; at < rects.size(); at++)
        controls_[at].view->widget().setGeometry(rects[at]);
    if (!grip_)
        return;
    grip_->resize(grip_->sizeHint());
    grip_->move(inside.bottomRight() - grip_->rect().bottomRight());
    grip_->raise();
}

// Returns how much larger than least_ the dialog is when it opens. If the user has resized this dialog in the past, the
// result is the stored difference. Otherwise the dialog is as wide as its lists need, up to LargestFirstWidth. The
// result is zero for a dialog without controls that can grow. If a dialog can grow but has no frame of the window
// manager, this function also makes its size grip.
QSize DialogView::findFirstExtra()
{
    if (!canGrow(growing_))
        return {0, 0};
    if (header_ && !grip_) {
        grip_ = new QSizeGrip(this);
        grip_->setAccessibleName(QStringLiteral("Size of the window"));
    }
    const QVariant chosen = windowSettings().value(sizeKey());
    if (chosen.isValid())
        return chosen.toSize().expandedTo({0, 0});
    int wider = 0;
    for (const Control& control : controls_)
        wider = std::max(wider, control.view->wantedWidth() - control.view->widget().width());
    const int most = static_cast<int>(screen()->availableGeometry().width() * LargestFirstWidth) - least_.width();
    return {std::clamp(wider, 0, std::max(most, 0)), 0};
}

QString DialogView::sizeKey() const
{
    return QStringLiteral("dialogs/") + windowTitle();
}

void DialogView::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    if (!least_.isValid())
        return;
    extra_ = (size() - least_).expandedTo({0, 0});
    layOut();
}

void DialogView::hideEvent(QHideEvent* event)
{
    if (!event->spontaneous() && canGrow(growing_) && extra_ != firstExtra_)
        windowSettings().setValue(sizeKey(), extra_);
    QDialog::hideEvent(event);
}

void DialogView::placeControls(const DialogUnits& units)
{
    for (const Control& control : controls_)
        control.view->widget().setGeometry(control.view->geometryIn(units.scaled(control.state.rectangle)));
    alignRows(units.scaled({0, 0, 0, RowTolerance}).height());
}

// If the vertical positions of two controls' texts differ by at most `tolerance` pixels, moves one control so that the
// texts are on one line. In the templates such controls differ by about one unit.
void DialogView::alignRows(int tolerance)
{
    std::vector<int> rows;
    for (const Control& control : controls_) {
        if (!control.state.visible || control.view->rowMiddle() < 0)
            continue;
        QWidget& widget = control.view->widget();
        const int middle = widget.y() + control.view->rowMiddle();
        const auto row = std::ranges::find_if(rows, [&](int other) { return std::abs(other - middle) <= tolerance; });
        if (row == rows.end())
            rows.push_back(middle);
        else
            widget.move(widget.x(), *row - control.view->rowMiddle());
    }
}

// Returns the factor by which the dialog must be wider so that its widest text fits. The factor is at most MostStretch.
double DialogView::stretchFor(const DialogUnits& units) const
{
    double stretch = 1;
    for (const Control& control : controls_) {
        const double width = units.x * (control.state.rectangle.right - control.state.rectangle.left);
        if (width > 0)
            stretch = std::max(stretch, control.view->leastWidth() / width);
    }
    return std::min(stretch, MostStretch);
}

}  // namespace platform::qt
