// load_resource.cpp - sets any bytes as the resource file of the process, and then makes every call that reads
// resources.

#include "resource/resource_file.h"

#include "ce/resource.h"

#include <cstring>
#include <memory>

namespace {

// Reads each byte, so that a sanitizer detects a span that points outside of the file.
unsigned sum(std::span<const std::byte> bytes)
{
    unsigned total = 0;
    for (const std::byte byte : bytes)
        total += std::to_integer<unsigned>(byte);
    return total;
}

const WCHAR* nameOf(const platform::resource::ResourceKey& key)
{
    if (const WORD* number = std::get_if<WORD>(&key))
        return MAKEINTRESOURCEW(*number);
    return std::get<std::u16string>(key).c_str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // The block has exactly the size of the input, so a sanitizer detects a read after its end. operator new aligns the
    // block as resources need.
    const std::unique_ptr<std::byte[]> file(new std::byte[size]);
    if (size)
        std::memcpy(file.get(), data, size);

    [[maybe_unused]] volatile unsigned seen = 0;
    (void)platform::resource::setResources({file.get(), size});
    if (const platform::resource::ResourceFile* resources = platform::resource::currentResources()) {
        for (const platform::resource::Resource& entry : resources->entries()) {
            seen = sum(entry.bytes);
            const HRSRC found = FindResourceW(nullptr, nameOf(entry.name), nameOf(entry.type));
            seen = SizeofResource(nullptr, found);
            seen = sum(platform::resource::resourceAt(LoadResource(nullptr, found)));
        }
        // These ids cover all texts that a small input contains.
        for (UINT id = 0; id < 512; ++id) {
            WCHAR text[8];
            seen = static_cast<unsigned>(LoadStringW(nullptr, id, text, 8));
            if (const auto* inPlace = reinterpret_cast<const WCHAR*>(LoadStringW(nullptr, id, nullptr, 0)))
                seen = inPlace[-1];
        }
    }
    (void)platform::resource::setResources({});
    return 0;
}
