// push_ahead.h - gives the kernel small files before it asks for them, when they are read in the order of their set.
//
// A copy of many small files otherwise waits for an answer for each. With this the kernel has most of them already, and
// the mount unpacks the next ones while the copy works.
#pragma once

#include "shown_sets.h"

#include <atomic>
#include <cstdint>

struct fuse_session;

namespace quillbox_mount {

// Any thread.
class PushAhead {
public:
    // Call it after the answer to a read of this file. The caller answers no request meanwhile, since the kernel may
    // wait for the answer to another read before it takes a file.
    void after(fuse_session* session, ShownSets& sets, Place file) noexcept;

    // Prevents further pushes, and waits for the one that is in progress. Call it while requests are still answered:
    // the kernel takes a page only after the read that it waits for was answered.
    void end() noexcept;

private:
    std::atomic<std::uint64_t> last_ = 0;  // the last file that was read or pushed
    std::atomic<bool> ends_ = false;       // a thread looks at it after it has set isPushing_
    std::atomic_flag isPushing_;           // one thread pushes, so that the others can answer
};

}  // namespace quillbox_mount
