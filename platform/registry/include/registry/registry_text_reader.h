// registry_text_reader.h - keys and values out of the text of a registry file (docs/format.md, "Registry file").
// Knows nothing of tables or files. The bytes may come from anybody.
#pragma once

#include "registry/registry_names.h"

#include "ce/types.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform::registry {

// What hears of the content, in the file's order. Names and levels are within the registry's limits.
class RegistryTextSink {
public:
    virtual ~RegistryTextSink() = default;

    // False ends the reading. A value belongs to the key before it.
    virtual bool key(const KeyPath& path) = 0;
    virtual bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data) = 0;
};

// Fills the buffer with the next bytes, and tells how many came: fewer only at the end.
using RegistryTextSource = std::function<std::size_t(std::span<std::byte>)>;

// Whether the text must be a whole registry, with the closing line and its numbers, or may be anything in the form,
// as somebody would write it by hand.
enum class Wholeness { Required, Free };

// Where reading ended before the text did.
struct RegistryTextFault {
    std::size_t line = 0;   // from 1
    const char* what = "";  // "the key's name is too long"
    bool bySink = false;    // the sink ended it, and nothing is wrong with the text
};

// Reads all of it. Nothing if it was good; then `sink` has heard everything. Memory stays at one piece of the text and
// one value.
[[nodiscard]] std::optional<RegistryTextFault> readRegistryText(const RegistryTextSource& source, Wholeness wholeness,
                                                                RegistryTextSink& sink);

}  // namespace platform::registry
