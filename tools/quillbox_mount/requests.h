// requests.h - the requests of the kernel that the mount answers.
#pragma once

#include "inode.h"
#include "push_ahead.h"
#include "shown_sets.h"

#include <atomic>

namespace quillbox_mount {

// The user data of the session.
struct RequestState {
    ShownSets& sets;
    fuse_session* session = nullptr;
    PushAhead ahead = {};
    std::atomic_flag isMeasuring = {};  // a thread measures files ahead
    bool mayLeaveOutOpen = false;     // the kernel reads files and folders that were never opened. Set before the first
    bool mayLeaveOutOpenDir = false;  // request.
};

const fuse_lowlevel_ops& requests();

}  // namespace quillbox_mount
