// error_reason.h - the platform's error numbers in words, for a report on a file.
#pragma once

#include "ce/types.h"

namespace platform::kernel {

// Part of a sentence: "the disk is full". Null for a number that needs words of the caller's.
const char* errorReason(DWORD error);

}  // namespace platform::kernel
