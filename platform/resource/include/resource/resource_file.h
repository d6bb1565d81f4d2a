// resource_file.h - the compiled resource file: finding an entry in its bytes. Knows nothing of what the
// entries hold, but for the blocks of texts.
//
// The bytes may come from anywhere: nothing outside of them is read, whatever they say.
#pragma once

#include "ce/types.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace platform::resource {

// A type or a name: a number or a text. Texts compare without the case of A to Z.
using ResourceKey = std::variant<WORD, std::u16string>;

struct Resource {
    ResourceKey type;
    ResourceKey name;
    std::span<const std::byte> bytes;  // without the padding behind it
};

class ResourceFile {
public:
    // Nothing if the bytes don't begin as a resource file does. An entry that is cut short or contradicts
    // itself ends the file: the entries before it stay good, and isWhole() is false.
    // The bytes must outlive the result.
    [[nodiscard]] static std::optional<ResourceFile> parse(std::span<const std::byte> file);

    [[nodiscard]] bool isWhole() const { return whole_; }
    [[nodiscard]] std::span<const Resource> entries() const { return entries_; }

    [[nodiscard]] bool hasType(const ResourceKey& type) const;
    // The first entry of that type and name; null if there is none.
    [[nodiscard]] const Resource* find(const ResourceKey& type, const ResourceKey& name) const;

    // The UTF-16 bytes of text `id`, without a NUL; their count of characters is the WORD before them.
    // Nothing if the text is absent (or empty, which is the same in the file) or its block is damaged.
    [[nodiscard]] std::optional<std::span<const std::byte>> findText(UINT id) const;

private:
    std::vector<Resource> entries_;
    bool whole_ = false;
};

// The process's resources, for the platform's calls. To be called before the program starts. The bytes must
// outlive the process and begin on a multiple of 4. False if they are no resource file or damaged: what is
// whole of them holds nevertheless.
bool setResources(std::span<const std::byte> file);

// From `address` to the end of the resource that it lies in; empty if it lies in none. For readers that are
// given the address alone.
[[nodiscard]] std::span<const std::byte> resourceAt(const void* address);

// The process's resources; null before setResources().
[[nodiscard]] const ResourceFile* currentResources();

}  // namespace platform::resource
