// replacement.cpp - see replacement.h.

#include "replacement.h"

#include "device/descriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace quillbox_device {

namespace {

constexpr uid_t sameOwner = static_cast<uid_t>(-1);

platform::device::Descriptor opened(const std::filesystem::path& path)
{
    return platform::device::Descriptor(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
}

}  // namespace

bool takesRights(const std::filesystem::path& file, const struct stat& old)
{
    const auto changed = opened(file);
    if (!changed)
        return false;
    const bool groupIsKept =
        ::fchown(changed.get(), old.st_uid, old.st_gid) == 0 || ::fchown(changed.get(), sameOwner, old.st_gid) == 0;
    const mode_t rights = groupIsKept ? S_IRWXU | S_IRWXG | S_IRWXO : S_IRWXU | S_IRWXO;
    return ::fchmod(changed.get(), old.st_mode & rights) == 0;
}

bool flushed(const std::filesystem::path& path)
{
    const auto flushed = opened(path);
    return flushed && ::fsync(flushed.get()) == 0;
}

bool flushed(int opened)
{
    return ::fsync(opened) == 0 || errno == EINVAL || errno == EROFS;
}

}  // namespace quillbox_device
