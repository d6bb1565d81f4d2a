// load_registry.cpp - reads any bytes as a registry file. The keys and values that are read must be within the limits
// of the registry. If the text is valid, its content is written as a second text. Reading and writing the second text
// must give the same text again. An input without a byte order mark is taken as UTF-8, which is easier for a fuzzer to
// vary than UTF-16.

#include "registry/registry_text_reader.h"
#include "registry/registry_text_writer.h"
#include "require.h"
#include "text/host_name.h"

#include <algorithm>
#include <cstring>

namespace {

using namespace platform::registry;

void requireName(std::u16string_view name)
{
    require(name.size() <= NameLimit && isText(name) && name.find(u'\0') == std::u16string_view::npos);
}

void requireKey(const KeyPath& path)
{
    require(path.root >= ClassesRootRow && path.root <= UsersRow && path.levels.size() <= LevelLimit);
    for (const std::u16string& level : path.levels) {
        requireName(level);
        require(!level.empty() && level.find(u'\\') == std::u16string::npos);
    }
}

// Writes the keys and values that it receives as the file of a whole registry.
class Copy final : public RegistryTextSink {
public:
    bool key(const KeyPath& path) override
    {
        requireKey(path);
        return writer_.key(path);
    }
    bool value(std::u16string_view name, DWORD type, std::span<const std::byte> data) override
    {
        requireName(name);
        return writer_.value(name, type, data);
    }
    // The copy doesn't contain deleted keys and values.
    bool removedKey(const KeyPath& path) override
    {
        requireKey(path);
        require(!path.levels.empty());
        return true;
    }
    bool removedValue(std::u16string_view name) override
    {
        requireName(name);
        return true;
    }
    const std::string& text()
    {
        require(writer_.finish());
        return text_;
    }

private:
    std::string text_;
    RegistryTextWriter writer_{[this](std::span<const std::byte> bytes) {
        text_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return true;
    }};
};

// Reads the text, and returns a new text with the same content. Returns nothing if the text isn't valid.
std::optional<std::string> copied(std::string_view text, Wholeness wholeness)
{
    const auto source = [&](std::span<std::byte> buffer) {
        const std::size_t count = std::min(buffer.size(), text.size());
        std::memcpy(buffer.data(), text.data(), count);
        text.remove_prefix(count);
        return count;
    };
    Copy copy;
    if (readRegistryText(source, wholeness, copy))
        return std::nullopt;
    return copy.text();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string text(reinterpret_cast<const char*>(data), size);
    if (!text.starts_with("\xFF\xFE")) {
        const std::u16string wide = u'\uFEFF' + platform::text::fromUtf8(text);
        text.assign(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(char16_t));
    }
    const auto whole = copied(text, Wholeness::Required);
    const auto free = copied(text, Wholeness::Free);
    // A text that is valid with Wholeness::Required must also be valid with Wholeness::Free, with the same content.
    require(!whole || free == whole);
    if (free)
        require(copied(*free, Wholeness::Required) == free);
    return 0;
}
