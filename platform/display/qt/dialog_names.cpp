// dialog_names.cpp - sets the names and groups of a dialog's controls, for screen readers.
#include "dialog_view.h"

#include "resources/accessible_names.h"

#include <QGroupBox>

#include <limits>

namespace platform::qt {

using window::WindowKind;

// Sets the accessible names of edits, list boxes, date pickers and progress bars, because these controls have no label
// of their own. If a control belongs to a group, sets the control's accessible description to the name of the group.
void DialogView::nameControls()
{
    for (const Control& control : controls_) {
        QWidget& widget = control.view->widget();
        const WindowKind kind = control.state.kind;
        const QString caption = windowTitle();
        const quillbox::ControlName known = quillbox::findControlName(fromQt(caption), control.state.id);
        if (kind == WindowKind::ProgressBar)
            widget.setAccessibleName(caption);  // not a text beside the bar, because those texts change
        else if (kind == WindowKind::Edit || kind == WindowKind::ListBox || kind == WindowKind::DatePicker)
            widget.setAccessibleName(known.name.empty() ? nameFor(control) : toQt(std::u16string(known.name)));
        const QString group = known.group.empty() ? groupAround(control) : toQt(std::u16string(known.group));
        if (!group.isEmpty())
            widget.setAccessibleDescription(group);
    }
}

// Returns the title of the group box around a button, or an empty text if there is none.
QString DialogView::groupAround(const Control& control) const
{
    if (control.state.kind != WindowKind::Button)
        return {};
    for (const Control& other : controls_) {
        const auto* group = qobject_cast<const QGroupBox*>(&other.view->widget());
        if (group && group != &control.view->widget() && group->geometry().contains(control.view->widget().geometry()))
            return group->title();
    }
    return {};
}

// Returns a name for a control that has no label of its own. The name is the nearest label to the left in the control's
// row. If there is none, the name is the nearest label above the control, or otherwise the dialog's caption. The width
// of the dialog is added to the distance of a label above the control, so that a label in the row is always nearer.
QString DialogView::nameFor(const Control& control) const
{
    const QRect own = control.view->widget().geometry();
    QString best = windowTitle();
    int bestDistance = std::numeric_limits<int>::max();
    for (const Control& other : controls_) {
        const QString label = other.view->label();
        const QRect there = other.view->widget().geometry();
        if (label.isEmpty() || !other.state.visible || there.top() > own.bottom() || there.left() > own.right())
            continue;
        const bool inRow = there.center().y() >= own.top() && there.center().y() <= own.bottom();
        const int distance = inRow ? own.left() - there.left() : width() + own.top() - there.top();
        const bool before = inRow ? there.left() < own.left() : there.bottom() <= own.top() + there.height() / 2;
        if (before && distance < bestDistance) {
            best = label;
            bestDistance = distance;
        }
    }
    return best;
}

}  // namespace platform::qt
