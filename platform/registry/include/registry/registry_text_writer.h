// registry_text_writer.h - writes keys and values as the text of a registry file (docs/format.md, "Registry file"). The
// caller passes the keys and values, and a function of the caller receives the text.
#pragma once

#include "registry/registry_names.h"

#include "ce/types.h"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace platform::registry {

// Keeps only one piece of the text in memory, however long the text is.
class RegistryTextWriter {
public:
    // Receives the next bytes of the file. If it returns false, the writing ends.
    using Output = std::function<bool(std::span<const std::byte>)>;

    explicit RegistryTextWriter(Output output);

    // After key(), call value() for each value of that key. Both functions return false once the output has refused
    // bytes.
    [[nodiscard]] bool key(const KeyPath& path);
    [[nodiscard]] bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data);

    // Writes the closing line, by which a reader detects a truncated file. Write nothing after it.
    [[nodiscard]] bool finish();

private:
    void put(char16_t unit);
    void put(std::u16string_view text);
    void putNumber(std::size_t number);
    void putHexadecimal(std::uint32_t number, unsigned digits);
    void putQuoted(std::u16string_view text);
    void putData(DWORD type, std::span<const std::byte> data);
    void endLine();
    void flush();

    Output output_;
    std::u16string pending_;
    std::size_t column_ = 0;  // code units in the current line
    std::size_t keys_ = 0;
    std::size_t values_ = 0;
    bool good_ = true;
};

}  // namespace platform::registry
