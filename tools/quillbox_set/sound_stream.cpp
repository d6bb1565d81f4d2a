#include "sound_stream.h"

#include <cstring>
#include <utility>

namespace quillbox_set {

using namespace archive;

SoundStream::SoundStream()
    : file_(u"\\recovered"), packed_(sizeof(DWORD) + PackedBlockBytes), memory_(std::make_unique<PackingMemory>())
{
    (void)file_.write(std::as_bytes(std::span(StreamMagic)));
}

void SoundStream::add(std::span<const std::byte> raw)
{
    if (!raw.empty())
        addBlock({reinterpret_cast<const BYTE*>(raw.data()), raw.size()});
}

const OpenFile* SoundStream::finish()
{
    if (!std::exchange(isFinished_, true))
        addBlock({});
    return file_.error() == ERROR_SUCCESS ? file_.opened() : nullptr;
}

Item SoundStream::item(BYTE kind) const
{
    Item item{};
    item.entry.kind = kind;
    item.entry.endOffset = static_cast<DWORD>(file_.bytes());
    return item;
}

void SoundStream::addBlock(std::span<const BYTE> raw)
{
    DWORD bytes = 0;
    auto* const block = reinterpret_cast<BYTE*>(packed_.data());
    // Packing can't fail for a block of this size.
    (void)PackBlock(raw.data(), static_cast<DWORD>(raw.size()), block + sizeof bytes, bytes, *memory_);
    std::memcpy(block, &bytes, sizeof bytes);
    (void)file_.write(std::span(packed_).first(sizeof bytes + bytes));
}

}  // namespace quillbox_set
