// requests.h - the functions that answer the kernel's requests to the mounted file system.
#pragma once

#include "inode.h"
#include "push_ahead.h"
#include "shown_sets.h"

#include <atomic>

namespace quillbox_mount {

// The user data of the libfuse session.
struct RequestState {
    ShownSets& sets;
    fuse_session* session = nullptr;
    PushAhead ahead = {};
    std::atomic_flag isMeasuring = {};  // set while a thread determines the sizes of the next files
    // True if the kernel can open files (mayLeaveOutOpen) or folders (mayLeaveOutOpenDir) without a request to the
    // mount. Both are set before the first request.
    bool mayLeaveOutOpen = false;
    bool mayLeaveOutOpenDir = false;
};

const fuse_lowlevel_ops& requests();

}  // namespace quillbox_mount
