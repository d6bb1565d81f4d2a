// shown_value.h - converts values of records and of the registry to short texts. If two values of the same type are
// different, their texts are different too. Registry values of different types also have different texts.
#pragma once

#include "ce/store.h"
#include "ce/types.h"

#include <cstddef>
#include <span>
#include <string>

namespace archive {

// Returns the UTF-8 text as it is if it has at most `mostBytes` bytes. Otherwise cuts the text, and appends the size
// and the SHA-256 of the whole text.
std::string shortText(const std::string& text, std::size_t mostBytes = 200);

std::string shownValue(const CEPROPVAL& property);

// Returns the value in the notation of a registry file, in one line: "text", dword:0000001f, hex:01,02. A long result
// is cut by shortText.
std::string shownRegistryValue(DWORD type, std::span<const std::byte> data);

}  // namespace archive
