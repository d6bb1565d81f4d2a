// media_watch.h - shows media as cards of the device while they are mounted in certain folders of the host.
#pragma once

#include "shown_folders.h"

#include "host/descriptor.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace platform::device {

class MediaWatch {
public:
    // A medium is a file system that is mounted directly in one of `folders`. The constructor shows the media that are
    // mounted already. A thread watches for changes until the object is destroyed. After media were mounted or
    // unmounted, that thread calls `changed` repeatedly until `changed` returns true.
    MediaWatch(std::vector<std::filesystem::path> folders, ShownFolders& shown, std::function<bool()> changed);
    ~MediaWatch();
    MediaWatch(const MediaWatch&) = delete;
    MediaWatch& operator=(const MediaWatch&) = delete;

private:
    void watch();
    [[nodiscard]] bool follow();

    const std::vector<std::filesystem::path> folders_;
    ShownFolders& shown_;
    const std::function<bool()> changed_;
    const host::Descriptor mounts_;
    const host::Descriptor end_;
    // The folder of each shown medium, with the kernel's number of the mount. Another medium that is mounted in the
    // same folder later usually has a different number. The kernel may use a number again after an unmount.
    std::map<std::filesystem::path, std::string> media_;
    std::thread thread_;
};

}  // namespace platform::device
