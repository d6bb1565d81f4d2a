// list_anew.h - makes the main window list the folders in its tree again, after folders were added or removed.
#pragma once

namespace platform::display {

// Posts a request to the main window's tree to list its folders again. Doesn't wait until they are listed. Returns
// false if the request was dropped, because the program is busy or asks a question. Otherwise returns true, even if
// there is no tree.
[[nodiscard]] bool listAnew();

}  // namespace platform::display
