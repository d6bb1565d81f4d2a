// removable.h - a card that comes and goes while the program runs; file/name_space.h has the calls.
#pragma once

#include <functional>
#include <string>

namespace platform::file {

// A card whose host folder can go at any time, such as a medium that is mounted there. The name space opens the folder
// only while the program uses it, so the host can unmount it at other times.
struct Removable {
    std::u16string name;
    std::string place;          // the path of the host folder
    std::function<int()> open;  // opens that folder: a descriptor, which the name space then owns, or a negative errno
};

}  // namespace platform::file
