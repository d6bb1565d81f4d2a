// host_gate.h - lets a watcher see the system calls of host_calls.h, and make them fail. The only call that the watcher
// doesn't see is the dropping of a lease. The program has no watcher: only tests link one (file/host_faults.h).
#pragma once

#include <atomic>
#include <cstdint>

namespace platform::file {

enum class HostCall { Read, Other };

// For HostCall::Read, beforeCall can return GivesNothing instead of an errno. The host isn't called then, and readAt
// returns 0 bytes.
inline constexpr int GivesNothing = -1;

// The functions can be called on any thread. The descriptors in their arguments are open during the call.
class HostCallWatcher {
public:
    HostCallWatcher() = default;
    HostCallWatcher(const HostCallWatcher&) = delete;
    HostCallWatcher& operator=(const HostCallWatcher&) = delete;

    // Returns 0 to let the call be made, or the errno with which it fails. For a read it can also return GivesNothing.
    [[nodiscard]] virtual int beforeCall(HostCall call) = 0;

    // Called before the bytes or the size of the file change, and after a new file with a name was made.
    virtual void beforeChange(int file) = 0;

    // The functions below are called after a call that succeeded. Each path is relative to the folder argument before
    // it.
    virtual void afterResize(int file, std::uint64_t size) = 0;
    virtual void afterMaking(int folder, const char* path) = 0;
    virtual void afterMove(int folder, const char* name, int newFolder, const char* newName) = 0;
    virtual void afterFlush(int fileOrFolder) = 0;
    virtual void afterFileSystemFlush(int fileOrFolder) = 0;

protected:
    ~HostCallWatcher() = default;
};

// Null, or a watcher that lives as long as the process.
inline constinit std::atomic<HostCallWatcher*> hostCallWatcher = nullptr;

// Calls beforeCall of the watcher and returns its result. Returns 0 without a watcher.
[[nodiscard]] inline int passGate(HostCall call = HostCall::Other)
{
    HostCallWatcher* const watcher = hostCallWatcher.load(std::memory_order_acquire);
    return watcher ? watcher->beforeCall(call) : 0;
}

// Calls `report` with the watcher, if there is one.
template <class Report>
void reportToWatcher(const Report& report)
{
    if (HostCallWatcher* const watcher = hostCallWatcher.load(std::memory_order_acquire))
        report(*watcher);
}

}  // namespace platform::file
