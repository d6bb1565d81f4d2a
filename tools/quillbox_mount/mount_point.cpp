#include "mount_point.h"

#include "host/descriptor.h"
#include "screen_text/screen_text.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace quillbox_mount {

namespace {

namespace fs = std::filesystem;

constexpr const char* Device = "/dev/fuse";
constexpr const char* Helper = "fusermount3";  // the program that mounts file systems for users other than root

bool isOnPath(const char* program)
{
    const char* const path = std::getenv("PATH");  // NOLINT(concurrency-mt-unsafe): there is one thread
    std::istringstream folders(path ? path : "/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (::access((fs::path(folder) / program).c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

}  // namespace

std::string folderFault(const std::string& folder)
{
    const std::string name = screen_text::onScreen(std::string_view(folder));
    std::error_code error;
    if (!fs::is_directory(folder, error))
        return "there is no folder " + name;
    const bool isEmpty = fs::is_empty(folder, error);
    if (error)
        return "the folder can't be read: " + name;
    return isEmpty ? "" : "the folder isn't empty: " + name;
}

std::string computerFault()
{
    const platform::host::Descriptor device(::open(Device, O_RDWR | O_CLOEXEC));
    if (!device)
        return std::string(Device) +
               " can't be opened, so this computer can't mount sets: " + std::generic_category().message(errno);
    if (::geteuid() != 0 && !isOnPath(Helper))
        return std::string(Helper) + " is missing, so only root can mount sets; it is in the package fuse3";
    return "";
}

}  // namespace quillbox_mount
