// removable.h - describes a card that can be added and removed while the program runs (addRemovable, removeRemovable).
#pragma once

#include <functional>
#include <string>

namespace platform::file {

// A card whose host folder can disappear at any time, for example because the user unmounts the medium at this folder.
// The host can't unmount a medium while a descriptor of its folder is open. So the file layer opens the folder only
// when the program uses it, and closeUnusedFolders (name_space.h) closes it.
struct Removable {
    std::u16string name;
    std::string place;  // the path of the host folder
    // Opens that folder. Returns a descriptor, which the file layer closes later, or a negative errno.
    std::function<int()> open;
};

}  // namespace platform::file
