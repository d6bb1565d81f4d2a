// file_window.h - reads a file from its beginning to its end through a buffer in which one can look ahead.
#pragma once

#include "archive/set_files.h"

#include <cstdint>
#include <span>
#include <vector>

namespace archive {

class FileWindow {
public:
    // The most that can be looked ahead.
    static constexpr std::size_t MostAhead = std::size_t{512} * 1024;

    explicit FileWindow(const OpenFile& file);

    std::uint64_t size() const { return size_; }
    // Bytes that the host couldn't read. They are 0 in the window.
    std::uint64_t unreadable() const { return unreadable_; }

    // The bytes from `offset` on: at least `ahead` of them, or as many as the file has. An offset may not be less than
    // that of the call before. Valid until the next call.
    std::span<const BYTE> from(std::uint64_t offset, std::size_t ahead);

    // How many bytes the host could read from `offset` on, up to `bytes`. They must be in the span of the last call.
    std::size_t readable(std::uint64_t offset, std::size_t bytes) const;

private:
    // Bytes that the host couldn't read.
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
    std::vector<Hole> holes_;  // those in the buffer, in the order of their offsets
    std::vector<BYTE> buffer_;
};

}  // namespace archive
