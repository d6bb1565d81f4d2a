// registry_text_reader.h - reads keys and values from the text of a registry file (docs/format.md, "Registry file").
// Independent of tables and files. The bytes are untrusted.
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

// Receives the content in the file's order. Names and levels are within the registry's limits.
class RegistryTextSink {
public:
    virtual ~RegistryTextSink() = default;

    // False ends the reading. A value belongs to the key before it.
    virtual bool key(const KeyPath& path) = 0;
    virtual bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data) = 0;
    // A text that isn't a whole registry can also delete a key with all below it, and a value of the key before it.
    virtual bool removedKey(const KeyPath& /*path*/) { return false; }
    virtual bool removedValue(std::u16string_view /*name*/) { return false; }
};

// Fills the buffer with the next bytes and returns their number: less than the buffer only at the end.
using RegistryTextSource = std::function<std::size_t(std::span<std::byte>)>;

// Required: the text must be a whole registry, with the closing line and its counts. Free: it may be any text in the
// format, for example one written by hand, also of version 4, and may delete keys and values.
enum class Wholeness { Required, Free };

// Where reading ended before the text did.
struct RegistryTextFault {
    std::size_t line = 0;   // from 1
    const char* what = "";  // "the key's name is too long"
    bool bySink = false;    // the sink ended it; the text has no fault
};

// Reads the whole text into `sink`. Nothing on success. Uses memory for one piece of the text and one value.
[[nodiscard]] std::optional<RegistryTextFault> readRegistryText(const RegistryTextSource& source, Wholeness wholeness,
                                                                RegistryTextSink& sink);

}  // namespace platform::registry
