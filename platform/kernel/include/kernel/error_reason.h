// error_reason.h - describes the platform's error numbers and exceptions in words, for a report.
#pragma once

#include "ce/types.h"

#include <exception>
#include <string>

namespace platform::kernel {

// Returns part of a sentence, such as "the disk is full". Null for an error that the caller has to describe itself.
const char* errorReason(DWORD error);

// Returns part of a sentence. It may contain a path, and so any character that a path can have.
std::string reasonOf(const std::exception& error);

}  // namespace platform::kernel
