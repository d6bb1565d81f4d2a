#include "controls/control_classes.h"
#include "dialogs/dialog_class.h"
#include "tree_control/tree_class.h"
#include "window/window_class.h"

namespace platform::window {

std::vector<WindowClass> builtInClasses()
{
    return {dialogClass(),   buttonClass(),   staticClass(),     editClass(),  listBoxClass(),
            progressClass(), treeViewClass(), datePickerClass(), bandsClass(), commandBarClass()};
}

}  // namespace platform::window
