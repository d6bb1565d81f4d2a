// error_reason.h - the platform's error numbers in words, for a report on a file.
#pragma once

#include "ce/types.h"

namespace platform::kernel {

// Part of a sentence: "the disk is full". Null for an error that the caller has to describe itself.
const char* errorReason(DWORD error);

}  // namespace platform::kernel
