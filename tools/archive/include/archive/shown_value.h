// shown_value.h - values of records and of the registry as short texts, which are equal only for equal values.
#pragma once

#include "ce/store.h"
#include "ce/types.h"

#include <cstddef>
#include <span>
#include <string>

namespace archive {

// A text of more than `mostBytes` is cut, and its size and its SHA-256 follow. UTF-8.
std::string shortText(const std::string& text, std::size_t mostBytes = 200);

std::string shownValue(const CEPROPVAL& property);

// As in a registry file: "text", dword:0000001f, hex:01,02.
std::string shownRegistryValue(DWORD type, std::span<const std::byte> data);

}  // namespace archive
