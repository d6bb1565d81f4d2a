#include "archive/file_window.h"

#include "archive/long_work.h"

#include "ce/error.h"
#include "ce/file.h"

#include <algorithm>
#include <cstring>

namespace archive {

namespace {

constexpr std::size_t BufferBytes = std::size_t{1024} * 1024;
static_assert(BufferBytes > FileWindow::MostAhead);

// Unreadable parts of a file are skipped in units of this size.
constexpr std::size_t PageBytes = 4096;

bool seekTo(HANDLE file, std::uint64_t offset)
{
    auto high = static_cast<LONG>(offset >> 32);
    SetLastError(ERROR_SUCCESS);
    return SetFilePointer(file, static_cast<LONG>(offset), &high, FILE_BEGIN) != INVALID_SET_FILE_POINTER ||
           GetLastError() == ERROR_SUCCESS;
}

}  // namespace

FileWindow::FileWindow(const OpenFile& file) : file_(file.handle()), size_(file.size()), buffer_(BufferBytes) {}

std::span<const BYTE> FileWindow::from(std::uint64_t offset, std::size_t ahead)
{
    const std::uint64_t wanted = std::min<std::uint64_t>(ahead, size_ - offset);
    if (offset + wanted > base_ + filled_)
        moveTo(offset);
    return std::span(buffer_).first(filled_).subspan(static_cast<std::size_t>(offset - base_));
}

std::size_t FileWindow::readable(std::uint64_t offset, std::size_t bytes) const
{
    const auto hole = std::ranges::find_if(holes_, [&](const Hole& each) { return each.end > offset; });
    if (hole == holes_.end() || hole->begin >= offset + bytes)
        return bytes;
    return hole->begin > offset ? static_cast<std::size_t>(hole->begin - offset) : 0;
}

void FileWindow::moveTo(std::uint64_t offset)
{
    checkStop();
    const std::uint64_t end = base_ + filled_;
    const auto kept = static_cast<std::size_t>(end > offset ? end - offset : 0);
    std::memmove(buffer_.data(), buffer_.data() + (filled_ - kept), kept);
    base_ = offset;
    filled_ = kept;
    std::erase_if(holes_, [&](const Hole& hole) { return hole.end <= offset; });
    const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(buffer_.size(), size_ - offset)) - kept;
    for (std::size_t left = room; left > 0; left = room - (filled_ - kept))
        filled_ += readInto(std::span(buffer_).subspan(filled_, left), base_ + filled_);
}

// Reads the file from `offset` on into `target`. If the byte at `offset` can't be read, fills the beginning of `target`
// with zeros. Returns how many bytes were read or filled, which is never 0.
std::size_t FileWindow::readInto(std::span<BYTE> target, std::uint64_t offset)
{
    DWORD bytes = 0;
    if (seekTo(file_, offset))
        (void)ReadFile(file_, target.data(), static_cast<DWORD>(target.size()), &bytes, nullptr);
    if (bytes != 0)
        return bytes;
    // The read of the whole target failed. Reads only the first page, which may be readable even if a later page isn't.
    const std::size_t page = std::min(PageBytes - static_cast<std::size_t>(offset % PageBytes), target.size());
    if (page < target.size() && seekTo(file_, offset) &&
        ReadFile(file_, target.data(), static_cast<DWORD>(page), &bytes, nullptr) && bytes != 0)
        return bytes;
    std::ranges::fill(target.first(page), BYTE{0});
    unreadable_ += page;
    holes_.push_back({offset, offset + page});
    return page;
}

}  // namespace archive
