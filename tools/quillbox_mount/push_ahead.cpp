#include "push_ahead.h"

#include "inode.h"

#include <exception>

namespace quillbox_mount {

namespace {

constexpr std::uint32_t MostFiles = 32;
constexpr std::uint64_t MostBytes = 131072;  // of one file

std::uint64_t numberOf(Place file)
{
    return std::uint64_t{file.set} << 32 | file.node;
}

void push(fuse_session* session, Place file, const Content& content)
{
    off_t offset = 0;
    for (const Piece& piece : content.pieces) {
        fuse_bufvec buffer = bufferOf(piece.bytes);
        buffer.buf[0].mem = const_cast<std::byte*>(piece.block->data()) + piece.start;
        // Without success the kernel asks for the file.
        (void)fuse_lowlevel_notify_store(session, inodeOf(file), offset, &buffer, FUSE_BUF_NO_SPLICE);
        offset += static_cast<off_t>(piece.bytes);
    }
}

// `file` becomes the last one that was pushed.
void pushAfter(fuse_session* session, ShownSets& sets, Place& file)
{
    for (std::uint32_t count = 0; count < MostFiles; count++) {
        const Place next = {file.set, file.node + 1};
        Content content;
        if (!sets.readSmall(next, MostBytes, content))
            break;
        push(session, next, content);
        file = next;
    }
}

}  // namespace

void PushAhead::after(fuse_session* session, ShownSets& sets, Place file) noexcept
{
    const bool inOrder = last_.exchange(numberOf(file)) + 1 == numberOf(file);
    if (!inOrder || isPushing_.test_and_set())
        return;
    try {
        pushAfter(session, sets, file);
    } catch (const std::exception&) {
        // There is too little memory, and the kernel asks for the files.
    }
    last_ = numberOf(file);
    isPushing_.clear();
}

}  // namespace quillbox_mount
