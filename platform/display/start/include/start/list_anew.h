// list_anew.h - makes the main window list the folders in its tree again, after folders were added or removed.
#pragma once

namespace platform::display {

// Returns false if the program is busy or asks a question. In that case nothing is listed. Returns true if there is no
// tree.
[[nodiscard]] bool listAnew();

}  // namespace platform::display
