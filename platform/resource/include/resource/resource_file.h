// resource_file.h - finds an entry in the bytes of a compiled resource file. It interprets no entry except the blocks
// of texts.
//
// The bytes are untrusted: no read goes beyond their end.
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
    std::span<const std::byte> bytes;  // without the padding after it
};

class ResourceFile {
public:
    // Nothing if the bytes don't begin like a resource file. A truncated or inconsistent entry ends the
    // file: then entries() has the entries before it, and isWhole() is false.
    // The bytes must outlive the result.
    [[nodiscard]] static std::optional<ResourceFile> parse(std::span<const std::byte> file);

    [[nodiscard]] bool isWhole() const { return whole_; }
    [[nodiscard]] std::span<const Resource> entries() const { return entries_; }

    [[nodiscard]] bool hasType(const ResourceKey& type) const;
    // The first entry of that type and name; null if there is none.
    [[nodiscard]] const Resource* find(const ResourceKey& type, const ResourceKey& name) const;

    // The UTF-16 bytes of text `id`, without a NUL. The WORD before them is the number of characters.
    // Nothing if the text is missing, empty (the same in the file), or in a damaged block.
    [[nodiscard]] std::optional<std::span<const std::byte>> findText(UINT id) const;

private:
    std::vector<Resource> entries_;
    bool whole_ = false;
};

// Sets the resources that the platform's calls use. Call it before the program starts. The bytes must stay valid until
// the process ends and be aligned to 4. False if they aren't a resource file or are damaged; then the undamaged entries
// are used.
bool setResources(std::span<const std::byte> file);

// The bytes from `address` to the end of the resource that contains it; empty if no resource does. For callers that
// have only the address.
[[nodiscard]] std::span<const std::byte> resourceAt(const void* address);

// The process's resources; null before setResources().
[[nodiscard]] const ResourceFile* currentResources();

}  // namespace platform::resource
