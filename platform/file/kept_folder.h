// kept_folder.h - keeps open the folder in which the last file was made. A restore makes its files folder by folder. If
// the folder is deep, looking up its whole path again for each file would noticeably slow down a restore of small
// files.
#pragma once

#include "host_calls.h"
#include "kernel/mutex.h"

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace platform::file {

// Can be used on any thread.
class KeptFolder {
public:
    // Returns the folder at `path`, which is relative to `mounted`, a descriptor of a folder. Null if the folder isn't
    // deep or can't be opened.
    //
    // If another process moves a folder of the path, the kept folder is no longer at the path. So after LongestUse, the
    // folder at the path is opened again. A file that is made until then is in the moved folder, as if it had been made
    // just before the move.
    [[nodiscard]] std::shared_ptr<const Descriptor> opened(int mounted, std::string_view path) EXCLUDES(mutex_);

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds LongestUse{20};

    kernel::Mutex mutex_;
    std::string path_ GUARDED_BY(mutex_);
    std::shared_ptr<const Descriptor> folder_ GUARDED_BY(mutex_);
    Clock::time_point since_ GUARDED_BY(mutex_);
};

}  // namespace platform::file
