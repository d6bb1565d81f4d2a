// push_ahead.h - pushes small files into the kernel's cache before a client reads them. It does so if the client reads
// files in the order in which the set contains them.
//
// A client that copies many small files would otherwise wait for an answer for each file. If the files are pushed, the
// kernel already has most of them when the client reads them, and the mount unpacks the next files while the client
// works.
#pragma once

#include "shown_sets.h"

#include <atomic>
#include <cstdint>

struct fuse_session;

namespace quillbox_mount {

// Can be used on any thread.
class PushAhead {
public:
    // If the client reads files in order, pushes small files that follow `file` in the set into the kernel's cache.
    // Call it after a read of `file` was answered. The call can block, because the kernel may need the answer to
    // another read before it accepts a pushed file. The blocked thread can't send this answer. So other threads must
    // answer requests during the call.
    void after(fuse_session* session, ShownSets& sets, Place file) noexcept;

    // Prevents further pushes, and waits for the push that is in progress. If a client waits for a read of a page
    // that is being pushed, the kernel accepts the page only after this read was answered. So call end() while other
    // threads still answer requests. Otherwise end() could wait forever.
    void end() noexcept;

private:
    std::atomic<std::uint64_t> last_ = 0;  // the last file that was read or pushed
    std::atomic<bool> ends_ = false;       // read only after isPushing_ was set, so that end() can't miss a push
    std::atomic_flag isPushing_;           // only one thread pushes at a time, so that the others can answer requests
};

}  // namespace quillbox_mount
