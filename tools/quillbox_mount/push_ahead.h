// push_ahead.h - pushes small files into the kernel's cache before a client reads them. It does so if the client reads
// files in the order of their set.
//
// Without this, a client that copies many small files waits for an answer for each file. With it, the kernel already
// has most of the files, and the mount unpacks the next ones while the client works.
#pragma once

#include "shown_sets.h"

#include <atomic>
#include <cstdint>

struct fuse_session;

namespace quillbox_mount {

// Can be used on any thread.
class PushAhead {
public:
    // Call it after the answer to a read of this file. The call can block, because the kernel may need the answer to
    // another read before it accepts a pushed file. The calling thread can't send this answer. So other threads must
    // answer requests in the meantime.
    void after(fuse_session* session, ShownSets& sets, Place file) noexcept;

    // Prevents further pushes, and waits for the push that is in progress. Call it while other threads still answer
    // requests. If a read of a pushed page is pending, the kernel accepts the page only after this read was answered.
    void end() noexcept;

private:
    std::atomic<std::uint64_t> last_ = 0;  // the last file that was read or pushed
    std::atomic<bool> ends_ = false;       // a thread checks `ends_` after it has set isPushing_
    std::atomic_flag isPushing_;           // only one thread pushes at a time, so that the others can answer requests
};

}  // namespace quillbox_mount
