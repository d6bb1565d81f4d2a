// known_attributes.h - remembers the stored attributes of recent files, so that a run asks the host once for each file.
//
// The host updates a file's change time whenever its attributes change, so an answer holds while that time is the same.
// That is certain only if the last change is so long ago that another one can't get the same time, and only on file
// systems whose times come from this machine's clock. Answers about other files aren't remembered.
#pragma once

#include "host_calls.h"
#include "kernel/mutex.h"

#include "ce/types.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

namespace platform::file {

// Any thread may use it.
class KnownAttributes {
public:
    static KnownAttributes& instance();

    // Empty if the answer isn't known.
    std::optional<DWORD> find(const HostStatus& status);

    // Remembers the host's answer. isSettled was true before the host was asked, and `status` is from before, too.
    void note(const HostStatus& status, DWORD bits);

    // Whether an answer about this file can be remembered. `folder` is on the file's file system.
    static bool isSettled(int folder, const HostStatus& status);

private:
    struct Slot {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;  // 0: empty
        std::int64_t seconds = 0;
        std::uint32_t nanoseconds = 0;
        DWORD bits = 0;
    };

    // Inode numbers in a folder are mostly consecutive, so the memory used is in proportion to the number of files.
    static constexpr std::size_t ChunkSlots = 64;
    static constexpr std::size_t Chunks = 8192;
    using Chunk = std::array<Slot, ChunkSlots>;

    kernel::Mutex mutex_;
    std::array<std::unique_ptr<Chunk>, Chunks> chunks_ GUARDED_BY(mutex_);
};

}  // namespace platform::file
