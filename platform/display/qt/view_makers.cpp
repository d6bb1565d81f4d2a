#include "view_makers.h"

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

}  // namespace platform::qt
