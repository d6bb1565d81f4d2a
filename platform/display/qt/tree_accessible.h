// tree_accessible.h - the tree of the main window as a screen reader meets it.
//
// The toolkit's own answer knows no item that is marked in part.
#pragma once

namespace platform::qt {

// From now on, for every view of a TreeItemsModel. More than once does no harm.
void useTreeAccessible();

}  // namespace platform::qt
