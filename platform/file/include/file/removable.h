// removable.h - describes a card that can be added and removed while the program runs (addRemovable, removeRemovable).
#pragma once

#include <functional>
#include <string>

namespace platform::file {

// A card whose host folder can disappear at any time, for example because a medium is mounted there. The name space
// opens the folder only while the program uses it, so the host can unmount it at other times.
struct Removable {
    std::u16string name;
    std::string place;          // the path of the host folder
    std::function<int()> open;  // opens that folder: a descriptor, which the name space then owns, or a negative errno
};

}  // namespace platform::file
