// exit_code.h - what the program tells a script.
#pragma once

namespace quillbox_set {

inline constexpr int exitGood = 0;
inline constexpr int exitFaults = 1;  // the set has faults, or not all that was asked for could be done
inline constexpr int exitNoSet = 2;   // bad usage, or no such file

}  // namespace quillbox_set
