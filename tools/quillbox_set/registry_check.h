// registry_check.h - checks a registry item with the reader that the device uses.
#pragma once

#include "unpacked_stream.h"

#include <string>

namespace quillbox_set {

struct RegistryReport {
    std::uint64_t keys = 0;
    std::uint64_t values = 0;
    std::string fault;        // of the stream or of the text. Empty for a complete registry.
    std::uint64_t bytes = 0;  // size of the text, as far as it can be unpacked
};

// Reads the stream to its end.
RegistryReport checkRegistry(const OpenFile& data, const ListEntry& entry);

}  // namespace quillbox_set
