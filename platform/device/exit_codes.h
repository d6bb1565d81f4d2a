// exit_codes.h - how quillbox ends. docs/commands.md has the table for users.
#pragma once

namespace platform::device {

inline constexpr int ExitComplete = 0;
inline constexpr int ExitNothingDone = 1;  // it couldn't start or begin, or a line of a script failed
inline constexpr int ExitBadUsage = 2;
inline constexpr int ExitLeftOut = 4;  // 3 and 5 are the window's, where there is no display
inline constexpr int ExitStopped = 6;

}  // namespace platform::device
