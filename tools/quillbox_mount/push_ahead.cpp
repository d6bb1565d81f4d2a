#include "push_ahead.h"

#include "inode.h"

#include <exception>

namespace quillbox_mount {

namespace {

constexpr std::uint32_t MostPushedFiles = 128;
// A client may skip this number of folders and files and still count as reading in order.
constexpr std::uint64_t MostSkipped = 8;
constexpr std::uint64_t MostOfOne = 131072;
constexpr std::uint64_t MostPushedBytes = 4 * 1024 * 1024;

std::uint64_t numberOf(Place file)
{
    return std::uint64_t{file.set} << 32 | file.node;
}

// Pushes the content into the kernel's cache, and adds its size to `bytes`. Returns false if the kernel doesn't accept
// the content, for example because it doesn't know the file: no client has listed its folder.
bool push(fuse_session* session, Place file, const Content& content, std::uint64_t& bytes)
{
    off_t offset = 0;
    for (const Piece& piece : content.pieces) {
        fuse_bufvec buffer = bufferOf(piece.bytes);
        buffer.buf[0].mem = const_cast<std::byte*>(piece.block->data()) + piece.start;
        if (fuse_lowlevel_notify_store(session, inodeOf(file), offset, &buffer, FUSE_BUF_NO_SPLICE) != 0)
            return false;
        offset += static_cast<off_t>(piece.bytes);
        bytes += piece.bytes;
    }
    return true;
}

// Pushes files that follow `file` in the set into the kernel's cache. `file` becomes the last file that was pushed. An
// empty file counts as pushed.
void pushAfter(fuse_session* session, ShownSets& sets, Place& file, const std::atomic<bool>& ends)
{
    std::uint64_t bytes = 0;
    for (std::uint32_t count = 0; count < MostPushedFiles && bytes < MostPushedBytes && !ends; count++) {
        const Place next = {file.set, file.node + 1};
        Content content;
        if (!sets.readSmall(next, MostOfOne, content) || !push(session, next, content, bytes))
            break;
        file = next;
    }
}

}  // namespace

void PushAhead::after(fuse_session* session, ShownSets& sets, Place file) noexcept
{
    const std::uint64_t skipped = numberOf(file) - last_.exchange(numberOf(file)) - 1;
    if (skipped > MostSkipped || isPushing_.test_and_set())
        return;
    try {
        pushAfter(session, sets, file, ends_);
    } catch (const std::exception&) {
        // There is too little memory. The kernel will request the files when a client reads them.
    }
    last_ = numberOf(file);
    isPushing_.clear();
    isPushing_.notify_all();
}

void PushAhead::end() noexcept
{
    ends_ = true;
    isPushing_.wait(true);
}

}  // namespace quillbox_mount
