// file_window.h - reads a file from its beginning to its end through a buffer. The caller can look ahead in the
// buffer.
#pragma once

#include "archive/set_files.h"

#include <cstdint>
#include <span>
#include <vector>

namespace archive {

class FileWindow {
public:
    // The largest `ahead` that from() accepts.
    static constexpr std::size_t MostAhead = std::size_t{512} * 1024;

    explicit FileWindow(const OpenFile& file);

    std::uint64_t size() const { return size_; }
    // The number of bytes so far that the host (the Linux system) couldn't read. The window contains zeros in their
    // place.
    std::uint64_t unreadable() const { return unreadable_; }

    // Returns the bytes of the file from `offset` on. The span has at least `ahead` bytes, or all bytes up to the end
    // of the file. `offset` must not be lower than in the previous call. The span is valid until the next call.
    std::span<const BYTE> from(std::uint64_t offset, std::size_t ahead);

    // Returns how many bytes at the beginning of a range are readable, counted up to the first unreadable one. The
    // range begins at `offset`, has `bytes` bytes and must be in the span that from() returned last.
    std::size_t readable(std::uint64_t offset, std::size_t bytes) const;

private:
    // A range of bytes that the host couldn't read.
    struct Hole {
        std::uint64_t begin;
        std::uint64_t end;
    };

    void moveTo(std::uint64_t offset);
    std::size_t readInto(std::span<BYTE> target, std::uint64_t offset);

    HANDLE file_;
    std::uint64_t size_;
    std::uint64_t unreadable_ = 0;
    std::uint64_t base_ = 0;  // offset of the first byte in the buffer
    std::size_t filled_ = 0;
    std::vector<Hole> holes_;  // unreadable bytes in the buffer, in the order of their offsets
    std::vector<BYTE> buffer_;
};

}  // namespace archive
