#include "kept_folder.h"

#include <fcntl.h>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace platform::file {

namespace {

// For a path of fewer names, two openings take longer than looking up the path for each file.
constexpr std::ptrdiff_t DeepNames = 3;

}  // namespace

std::shared_ptr<const Descriptor> KeptFolder::opened(int mounted, std::string_view path)
{
    if (std::ranges::count(path, '/') + 1 < DeepNames)
        return nullptr;
    const auto now = Clock::now();
    {
        const kernel::MutexLock lock(mutex_);
        if (folder_ && path_ == path && now - since_ < LongestUse)
            return folder_;
    }
    std::string copy(path);
    auto folder = std::make_shared<const Descriptor>(openBelow(mounted, copy.c_str(), O_PATH | O_DIRECTORY));
    if (!*folder)
        return nullptr;
    const kernel::MutexLock lock(mutex_);
    path_ = std::move(copy);
    folder_ = folder;
    since_ = now;
    return folder;
}

}  // namespace platform::file
