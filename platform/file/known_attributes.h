// known_attributes.h - the stored attributes of files seen lately, so that a run asks the host once for each.
//
// A host's file changes its change time with its attributes: an answer holds as long as that time is the same. That is
// sure only for a file whose last change lies so far back that a further one can't get the same time, and only where
// this machine's clock makes the times. Of other files nothing is kept.
#pragma once

#include "host_calls.h"

#include "ce/types.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

namespace platform::file {

// Any thread may use it.
class KnownAttributes {
public:
    [[nodiscard]] static KnownAttributes& instance();

    [[nodiscard]] std::optional<DWORD> find(const HostStatus& status);

    // What the host answered, for a file that isSettled said yes to before the question; `status` is from before, too.
    void note(const HostStatus& status, DWORD bits);

    // Can an answer about this file be kept? `folder` lies on the file's file system.
    [[nodiscard]] static bool isSettled(int folder, const HostStatus& status);

private:
    struct Slot {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;  // 0: empty
        std::int64_t seconds = 0;
        std::uint32_t nanoseconds = 0;
        DWORD bits = 0;
    };

    // Inodes of one folder mostly follow one another, so that memory follows the number of files.
    static constexpr std::size_t ChunkSlots = 64;
    static constexpr std::size_t Chunks = 8192;
    using Chunk = std::array<Slot, ChunkSlots>;

    std::mutex mutex_;
    std::array<std::unique_ptr<Chunk>, Chunks> chunks_;
};

}  // namespace platform::file
