// registry_check.h - a registry item held to what a device accepts as a registry, by the device's own reader.
#pragma once

#include "unpacked_stream.h"

#include <string>

namespace quillbox_set {

struct RegistryReport {
    std::uint64_t keys = 0;
    std::uint64_t values = 0;
    std::string fault;        // the stream's or the text's; empty for a whole registry
    std::uint64_t bytes = 0;  // of the text, as far as it unpacks
};

// Reads the stream to its end.
[[nodiscard]] RegistryReport checkRegistry(const OpenFile& data, const ListEntry& entry);

}  // namespace quillbox_set
