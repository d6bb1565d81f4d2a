// list_anew.h - makes the main window list the folders in its tree again, after folders were added or removed.
#pragma once

namespace platform::display {

// Only posts the request to the tree. Returns false if the request was dropped, because the program is busy or asks a
// question. Otherwise returns true, even if there is no tree.
[[nodiscard]] bool listAnew();

}  // namespace platform::display
