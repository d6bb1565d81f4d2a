#include "media_watch.h"

#include "file/name_space.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <sys/eventfd.h>
#include <unistd.h>

namespace platform::device {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr const char* MountList = "/proc/self/mountinfo";

// A medium stays open for this time after its last use. The kernel doesn't unmount a medium that is open.
constexpr auto UseEnds = 1000ms;
constexpr int LookAgain = 500;  // milliseconds

// In the mount list, the kernel writes a blank, tab, line break or backslash of a path as a backslash and three octal
// digits.
fs::path unescaped(const std::string& word)
{
    std::string path;
    for (std::size_t at = 0; at < word.size(); ++at) {
        if (word[at] == '\\' && at + 3 < word.size()) {
            path += static_cast<char>(std::stoi(word.substr(at + 1, 3), nullptr, 8));
            at += 3;
        } else {
            path += word[at];
        }
    }
    return path;
}

std::map<fs::path, std::string> mountedIn(const std::vector<fs::path>& folders)
{
    std::map<fs::path, std::string> media;
    std::ifstream list(MountList);
    for (std::string line; std::getline(list, line);) {
        std::istringstream words(line);
        std::string number;
        std::string parent;
        std::string device;
        std::string root;
        std::string place;
        words >> number >> parent >> device >> root >> place;
        const fs::path path = unescaped(place);
        if (std::ranges::find(folders, path.parent_path()) != folders.end())
            media[path] = number;
    }
    return media;
}

std::vector<fs::path> canonical(std::vector<fs::path> folders)
{
    std::error_code error;
    for (fs::path& folder : folders)
        folder = fs::weakly_canonical(folder, error);
    return folders;
}

}  // namespace

MediaWatch::MediaWatch(std::vector<fs::path> folders, ShownFolders& shown, std::function<bool()> changed)
    : folders_(canonical(std::move(folders))), shown_(shown), changed_(std::move(changed)),
      mounts_(::open(MountList, O_RDONLY | O_CLOEXEC)), end_(::eventfd(0, EFD_CLOEXEC))
{
    (void)follow();
    if (mounts_ && end_)
        thread_ = std::thread([this] { watch(); });
}

MediaWatch::~MediaWatch()
{
    const std::uint64_t one = 1;
    (void)!::write(end_.get(), &one, sizeof one);
    if (thread_.joinable())
        thread_.join();
}

void MediaWatch::watch()
{
    bool toTell = false;
    while (true) {
        std::array<pollfd, 2> ready{{{mounts_.get(), POLLPRI, 0}, {end_.get(), POLLIN, 0}}};
        if (::poll(ready.data(), ready.size(), toTell || !media_.empty() ? LookAgain : -1) < 0)
            continue;
        if (ready[1].revents)
            return;
        toTell = follow() || toTell;
        file::closeUnusedFolders(UseEnds);
        if (toTell)
            toTell = !changed_();
    }
}

// Shows the media that were mounted and removes those that were unmounted. Returns whether anything changed.
bool MediaWatch::follow()
{
    const auto now = mountedIn(folders_);
    bool changed = false;
    for (auto known = media_.begin(); known != media_.end();) {
        const auto still = now.find(known->first);
        if (still != now.end() && still->second == known->second) {
            ++known;
            continue;
        }
        shown_.removeMedium(known->first);
        known = media_.erase(known);
        changed = true;
    }
    for (const auto& [place, number] : now) {
        if (!media_.contains(place) && shown_.addMedium(place)) {
            media_[place] = number;
            changed = true;
        }
    }
    return changed;
}

}  // namespace platform::device
