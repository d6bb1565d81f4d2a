#include "view_makers.h"

namespace platform::qt {

View* makeControlView(const window::WindowState& state, const UserInput& input, QWidget* parent)
{
    switch (state.kind) {
    case window::WindowKind::Button:
        return makeButtonView(state, input, parent);
    case window::WindowKind::Static:
        return makeStaticView(state, input, parent);
    case window::WindowKind::Edit:
        return makeEditView(state, input, parent);
    case window::WindowKind::ListBox:
        return makeListView(state, input, parent);
    case window::WindowKind::ProgressBar:
        return makeProgressView(state, input, parent);
    case window::WindowKind::TreeView:
        return makeTreeView(state, input, parent);
    case window::WindowKind::DatePicker:
        return makeDateView(state, input, parent);
    default:
        return nullptr;
    }
}

}  // namespace platform::qt
