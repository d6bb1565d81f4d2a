// registry_text_reader.h - reads keys and values from the text of a registry file (docs/format.md, "Registry file"). A
// function of the caller supplies the text, and an object of the caller receives the content. The bytes are untrusted.
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

    // Each function returns false to end the reading. A value belongs to the key of the last call of key().
    virtual bool key(const KeyPath& path) = 0;
    virtual bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data) = 0;
    // With Wholeness::Free, a text can also delete keys and values. removedKey() gets a key that is to be deleted with
    // all below it. removedValue() gets the name of a value that is to be deleted. The value belongs to the key of the
    // last call of key().
    virtual bool removedKey(const KeyPath& /*path*/) { return false; }
    virtual bool removedValue(std::u16string_view /*name*/) { return false; }
};

// Fills the buffer with the next bytes and returns their number. A number below the size of the buffer means that the
// text ends there.
using RegistryTextSource = std::function<std::size_t(std::span<std::byte>)>;

// Required: the text must contain a whole registry. It must end with a closing line, and the numbers of keys and values
// in this line must be right. Free: any text in the format is read, also a text that begins with REGEDIT4, and a text
// without a closing line. The numbers in a closing line aren't checked. The text may delete keys and values.
enum class Wholeness { Required, Free };

// Where and why the reading ended before the end of the text.
struct RegistryTextFault {
    std::size_t line = 0;   // from 1
    const char* what = "";  // for example "the key's path is too long"
    bool bySink = false;    // the sink ended the reading; the text has no fault
};

// Reads the whole text into `sink`. Returns nothing on success. Keeps only one piece of the text and one value in
// memory.
[[nodiscard]] std::optional<RegistryTextFault> readRegistryText(const RegistryTextSource& source, Wholeness wholeness,
                                                                RegistryTextSink& sink);

}  // namespace platform::registry
