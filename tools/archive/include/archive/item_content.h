// item_content.h - reads the content of an item of any kind, and checks it by the rules of its kind.
#pragma once

#include "archive/image_check.h"
#include "archive/listed_set.h"

#include "registry/registry_text_reader.h"

#include <span>
#include <string>

namespace archive {

// Receives the content of one item. The base class ignores all of it.
class ContentSink : public RecordSink, public platform::registry::RegistryTextSink {
public:
    // Receives the next bytes of a file. If the function returns false, the reading ends without a fault.
    virtual bool bytes(std::span<const std::byte> /*piece*/) { return true; }

    // key() and value() receive the content of the registry. If one of them returns false, the reading ends and the
    // item counts as damaged.
    bool key(const platform::registry::KeyPath& /*path*/) override { return true; }
    bool value(std::u16string_view /*name*/, DWORD /*type*/, std::span<const std::byte> /*data*/) override
    {
        return true;
    }
};

struct ContentReport {
    std::string fault;       // the first fault of the item; empty if the item is sound
    ImageReport image;       // of a database
    std::uint64_t keys = 0;  // number of keys that were read from the registry
    std::uint64_t values = 0;
    std::uint64_t bytes = 0;  // the number of unpacked bytes that were read
};

// Reads the item to its end. An item of an unknown kind is read like a file. If the item is damaged, `sink` receives
// the content before the damage.
ContentReport readContent(const OpenFile& data, const Item& item, ContentSink& sink);

// Returns the path as a registry file contains it, for example "HKEY_CURRENT_USER\Software".
std::u16string keyText(const platform::registry::KeyPath& path);

}  // namespace archive
