// list_anew.h - has the main window list anew what its tree shows, after folders came or went.
#pragma once

namespace platform::display {

// False if the program works or asks something now. True if there is no tree.
[[nodiscard]] bool listAnew();

}  // namespace platform::display
