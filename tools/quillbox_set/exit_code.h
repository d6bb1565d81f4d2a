// exit_code.h - the exit codes of quillbox-set.
#pragma once

namespace quillbox_set {

inline constexpr int exitGood = 0;
inline constexpr int exitFaults = 1;  // the set has faults, or a part of the request failed
inline constexpr int exitNoSet = 2;   // bad usage, or no such file

}  // namespace quillbox_set
