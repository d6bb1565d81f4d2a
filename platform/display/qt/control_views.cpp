// control_views.cpp - a widget for each kind of control.

#include "control_views.h"

#include "button_views.h"
#include "date_view.h"
#include "edit_views.h"
#include "list_view.h"
#include "progress_view.h"
#include "static_view.h"
#include "tree_view.h"

namespace platform::qt {

View* makeControlView(const window::WindowState& state, const Courier& courier, QWidget* parent)
{
    switch (state.kind) {
    case window::WindowKind::Button:
        return makeButtonView(state, courier, parent);
    case window::WindowKind::Static:
        return makeStaticView(state, courier, parent);
    case window::WindowKind::Edit:
        return makeEditView(state, courier, parent);
    case window::WindowKind::ListBox:
        return makeListView(state, courier, parent);
    case window::WindowKind::ProgressBar:
        return makeProgressView(state, courier, parent);
    case window::WindowKind::TreeView:
        return makeTreeView(state, courier, parent);
    case window::WindowKind::DatePicker:
        return makeDateView(state, courier, parent);
    default:
        return nullptr;
    }
}

void followControl(View& view, const window::WindowState& state, Changes changes)
{
    view.widget().setEnabled(state.enabled);
    view.follow(state, changes);
    view.widget().setVisible(state.visible);
}

}  // namespace platform::qt
