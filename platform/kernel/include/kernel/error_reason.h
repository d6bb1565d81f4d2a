// error_reason.h - the platform's error numbers and exceptions in words, for a report.
#pragma once

#include "ce/types.h"

#include <exception>
#include <string>

namespace platform::kernel {

// Part of a sentence: "the disk is full". Null for an error that the caller has to describe itself.
const char* errorReason(DWORD error);

// Part of a sentence, which may contain any character of a path.
std::string reasonOf(const std::exception& error);

}  // namespace platform::kernel
