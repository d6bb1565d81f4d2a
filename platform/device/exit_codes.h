// exit_codes.h - the exit codes of quillbox. docs/commands.md has the table for users.
#pragma once

namespace platform::device {

inline constexpr int ExitComplete = 0;
inline constexpr int ExitNothingDone = 1;  // nothing was done, a line of a script failed, or output can't be written
inline constexpr int ExitBadUsage = 2;
inline constexpr int ExitLeftOut = 4;  // window_module.h has 3 (no display) and 5 (display lost)
inline constexpr int ExitStopped = 6;

}  // namespace platform::device
