// known_attributes.h - remembers the stored attributes (stored_attributes.h) of recent files, so that a backup or
// restore asks the host only once for each file.
//
// The host (the Linux system) sets a file's change time whenever an attribute of the file changes. So remembered
// attributes stay valid as long as the change time is the same. This is certain only under two conditions: the last
// change is so long ago that another change can't get the same time, and the file system takes its times from this
// machine's clock. Attributes are remembered only under these conditions.
#pragma once

#include "host_calls.h"
#include "kernel/mutex.h"

#include "ce/types.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

namespace platform::file {

// Any thread may use the object.
class KnownAttributes {
public:
    static KnownAttributes& instance();

    // Returns the stored attributes. Empty if they aren't remembered.
    std::optional<DWORD> find(const HostStatus& status);

    // Remembers the stored attributes `bits` of a file. The caller must first read `status`, then check that isSettled
    // returns true for it, and only then ask the host for `bits`.
    void note(const HostStatus& status, DWORD bits);

    // Whether the stored attributes of the file with this status may be remembered (see the conditions above). `folder`
    // is a descriptor on the same file system as the file.
    static bool isSettled(int folder, const HostStatus& status);

private:
    struct Slot {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;  // 0: empty
        std::int64_t seconds = 0;
        std::uint32_t nanoseconds = 0;
        DWORD bits = 0;
    };

    // Slots are allocated in chunks, and each chunk is for consecutive inode numbers. The files of a folder mostly have
    // consecutive inode numbers, so they need few chunks.
    static constexpr std::size_t ChunkSlots = 64;
    static constexpr std::size_t Chunks = 8192;
    using Chunk = std::array<Slot, ChunkSlots>;

    kernel::Mutex mutex_;
    std::array<std::unique_ptr<Chunk>, Chunks> chunks_ GUARDED_BY(mutex_);
};

}  // namespace platform::file
