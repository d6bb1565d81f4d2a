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
    // The next bytes of a file. False ends the reading, which is no fault.
    virtual bool bytes(std::span<const std::byte> /*piece*/) { return true; }

    // The content of the registry. False ends the reading; then the item counts as damaged.
    bool key(const platform::registry::KeyPath& /*path*/) override { return true; }
    bool value(std::u16string_view /*name*/, DWORD /*type*/, std::span<const std::byte> /*data*/) override
    {
        return true;
    }
};

struct ContentReport {
    std::string fault;       // the first one of the item. Empty if it is sound.
    ImageReport image;       // of a database
    std::uint64_t keys = 0;  // of the registry
    std::uint64_t values = 0;
    std::uint64_t bytes = 0;  // unpacked, as far as it was read
};

// Reads the item to its end. An item of an unknown kind is read like a file. Before a fault, `sink` has received what
// comes before the damage.
ContentReport readContent(const OpenFile& data, const Item& item, ContentSink& sink);

// The path as it is in a registry file: "HKEY_CURRENT_USER\Software".
std::u16string keyText(const platform::registry::KeyPath& path);

}  // namespace archive
