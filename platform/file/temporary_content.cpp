#include "temporary_content.h"

#include "host/files.h"
#include "parent_folder.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

namespace platform::file {

namespace {

constexpr unsigned OwnerOnly = 0600;

// Makes an unnamed file. If the file system doesn't support O_TMPFILE, makes a file with a name and deletes the name at
// once.
int makeNameless(const HostPath& path)
{
    const ParentFolder parent(path);
    if (parent.get() < 0)
        return parent.get();
    const int made = openBelow(parent.get(), ".", O_TMPFILE | O_RDWR, OwnerOnly);
    if (made != -EOPNOTSUPP && made != -EISDIR && made != -EINVAL)
        return made;
    const std::string name = host::unguessableName() + ".tmp";
    Descriptor named(openBelow(parent.get(), name.c_str(), O_RDWR | O_CREAT | O_EXCL, OwnerOnly));
    if (!named)
        return named.get();
    const int removed = removeFile(parent.get(), name.c_str());
    return removed < 0 ? removed : named.release();
}

}  // namespace

TemporaryContent::TemporaryContent(HostPath path, Memory memory) : path_(std::move(path)), memory_(std::move(memory)) {}

bool TemporaryContent::takes(std::uint64_t offset, std::size_t bytes, std::uint64_t size) const
{
    return offset <= size && offset <= MemoryBytes && bytes <= MemoryBytes - offset;
}

void TemporaryContent::put(std::uint64_t offset, std::span<const std::byte> bytes)
{
    std::memcpy(memory_.get() + offset, bytes.data(), bytes.size());
}

std::size_t TemporaryContent::read(std::uint64_t offset, std::span<std::byte> out, std::uint64_t size) const
{
    if (offset >= size)
        return 0;
    const std::size_t bytes = std::min<std::uint64_t>(out.size(), size - offset);
    std::memcpy(out.data(), memory_.get() + offset, bytes);
    return bytes;
}

int TemporaryContent::spill(std::uint64_t size, HostStatus& status)
{
    Descriptor nameless(makeNameless(path_));
    if (!nameless)
        return nameless.get();
    if (const int result = writeAllAt(nameless.get(), {memory_.get(), size}, 0); result < 0)
        return result;
    if (const int result = readStatus(nameless.get(), "", status); result < 0)
        return result;
    file_ = std::move(nameless);
    memory_.reset();
    return 0;
}

int TemporaryContent::copyTo(int file, std::uint64_t size) const
{
    if (isInMemory())
        return writeAllAt(file, {memory_.get(), size}, 0);
    std::vector<std::byte> piece(std::min<std::uint64_t>(MemoryBytes, size));
    for (std::uint64_t offset = 0; offset < size;) {
        const ssize_t came =
            readAt(file_.get(), std::span(piece).first(std::min<std::uint64_t>(piece.size(), size - offset)), offset);
        if (came <= 0)
            return came < 0 ? static_cast<int>(came) : -EIO;
        if (const int result = writeAllAt(file, std::span(piece).first(static_cast<std::size_t>(came)), offset);
            result < 0)
            return result;
        offset += static_cast<std::uint64_t>(came);
    }
    return 0;
}

void TemporaryContent::replaceBy(Descriptor named)
{
    file_ = std::move(named);
    memory_.reset();
    named_ = true;
}

}  // namespace platform::file
