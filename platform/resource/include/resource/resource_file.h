// resource_file.h - finds the entries in the bytes of a compiled resource file. The bytes of an entry aren't
// interpreted, with one exception: findText looks for a text in the entries that contain the texts for LoadStringW, 16
// texts per entry.
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

// The type or the name of a resource. Each is a number or a text. Texts are compared without regard to the case of A to
// Z.
using ResourceKey = std::variant<WORD, std::u16string>;

struct Resource {
    ResourceKey type;
    ResourceKey name;
    std::span<const std::byte> bytes;  // without the padding after it
};

class ResourceFile {
public:
    // Parses the bytes of a resource file, which must outlive the result. Returns nothing if the bytes don't begin like
    // a resource file. Parsing ends at a truncated or inconsistent entry. In that case entries() has only the entries
    // before that entry, and isWhole() is false.
    [[nodiscard]] static std::optional<ResourceFile> parse(std::span<const std::byte> file);

    [[nodiscard]] bool isWhole() const { return whole_; }
    [[nodiscard]] std::span<const Resource> entries() const { return entries_; }

    [[nodiscard]] bool hasType(const ResourceKey& type) const;
    // The first entry of that type and name; null if there is none.
    [[nodiscard]] const Resource* find(const ResourceKey& type, const ResourceKey& name) const;

    // The UTF-16 bytes of text `id`, without a NUL. The WORD before them is the number of characters. Returns nothing
    // if the text is empty or missing, because the file doesn't distinguish these cases. Also returns nothing if the
    // entry with the text is damaged.
    [[nodiscard]] std::optional<std::span<const std::byte>> findText(UINT id) const;

private:
    std::vector<Resource> entries_;
    bool whole_ = false;
};

// Sets the resources that the platform's calls use. Call it before the program starts. The bytes must stay valid until
// the process ends and be aligned to 4. Returns false if they aren't aligned, aren't a resource file, or are damaged.
// In a damaged file only the entries before the damage are used.
bool setResources(std::span<const std::byte> file);

// Returns the bytes from `address` to the end of the resource that contains `address`. Returns an empty span if no
// resource contains it.
[[nodiscard]] std::span<const std::byte> resourceAt(const void* address);

// The process's resources; null before setResources().
[[nodiscard]] const ResourceFile* currentResources();

}  // namespace platform::resource
