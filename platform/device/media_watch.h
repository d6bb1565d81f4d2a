// media_watch.h - shows the media that the host mounts in some folders as cards, while they are mounted.
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
    // The folder of each medium, with the host's number of the mount. If a second medium is mounted in the same folder
    // later, the number differs.
    std::map<std::filesystem::path, std::string> media_;
    std::thread thread_;
};

}  // namespace platform::device
