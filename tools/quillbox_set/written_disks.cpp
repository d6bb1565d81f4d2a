// written_disks.cpp - see written_disks.h.

#include "written_disks.h"

#include "file/device_path.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace quillbox_set {

using platform::file::Descriptor;

void WrittenDisks::note(const std::u16string& path)
{
    const std::u16string folder = path.substr(0, path.rfind(u'\\') + 1);
    if (!disks_.empty() && folder == lastFolder_)
        return;
    const platform::file::HostPlace place = platform::file::resolvePath(path);
    if (place.error != 0)
        return;  // nothing is written there
    Descriptor opened(platform::file::openBelow(place.mount->folder(), place.parent().c_str(), O_RDONLY | O_DIRECTORY));
    struct stat status {};
    if (!opened.isOpen()) {
        error_ = -opened.number();
        return;
    }
    if (::fstat(opened.number(), &status) != 0) {
        error_ = errno;
        return;
    }
    lastFolder_ = folder;
    if (std::ranges::find(disks_, status.st_dev, &Disk::number) == disks_.end())
        disks_.push_back({status.st_dev, std::move(opened)});
}

int WrittenDisks::flush()
{
    for (const Disk& disk : disks_) {
        if (::syncfs(disk.folder.number()) != 0)
            error_ = errno;
    }
    return error_;
}

}  // namespace quillbox_set
