#include "device_files.h"

#include "archive/long_work.h"
#include "failure.h"

#include "file/name_space.h"
#include "set/item_kinds.h"
#include "text/host_name.h"

#include "ce/file.h"

#include <cerrno>
#include <memory>
#include <string_view>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>

namespace quillbox_device {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

std::int64_t nanoseconds(const timespec& time)
{
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

std::u16string deviceNameOf(std::string_view path)
{
    std::u16string name;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        name += u"\\" + platform::text::toDeviceName(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return name;
}

}  // namespace

Stamp stampOf(const struct stat& status)
{
    return {status.st_ino, status.st_size, nanoseconds(status.st_mtim), nanoseconds(status.st_ctim)};
}

DeviceFiles::DeviceFiles(const std::filesystem::path& device)
    : root_(::open((device / "object-store").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
      store_(device / "object-store")
{
    if (!root_)
        throw Failure("\"" + device.string() + "\" is not a device: its folder \"object-store\" can't be opened.",
                      exitBadUsage);
    std::vector<std::string> waiting = {""};
    while (!waiting.empty()) {
        const std::string path = std::move(waiting.back());
        waiting.pop_back();
        readFolder(path, deviceNameOf(path), waiting);
    }
}

void DeviceFiles::readFolder(const std::string& path, const std::u16string& name, std::vector<std::string>& waiting)
{
    archive::checkStop();
    const char* const shown = path.empty() ? "." : path.c_str();
    platform::host::Descriptor opened(::openat(root_.get(), shown, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    const std::unique_ptr<DIR, CloseFolder> folder(opened ? ::fdopendir(opened.get()) : nullptr);
    if (!folder) {
        files_.push_back({path, {}, "the folder can't be read: " + std::generic_category().message(errno)});
        return;
    }
    const int number = opened.release();  // `folder` closes it
    errno = 0;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread reads this folder
    for (const dirent* entry = ::readdir(folder.get()); entry; entry = ::readdir(folder.get())) {
        const std::string_view own = entry->d_name;
        if (own == "." || own == "..")
            continue;
        std::string inner = path.empty() ? std::string(own) : path + "/" + std::string(own);
        struct stat status {};
        if (::fstatat(number, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            files_.push_back({inner, {}, std::generic_category().message(errno)});
        } else if (S_ISDIR(status.st_mode)) {
            waiting.push_back(std::move(inner));
        } else {
            const bool isFile = S_ISREG(status.st_mode);
            const std::u16string whole = name + u"\\" + platform::text::toDeviceName(own);
            index_.emplace(archive::NameHash(ItemKindFile, whole), files_.size());
            files_.push_back({std::move(inner), stampOf(status), isFile ? "" : "it is a link or no file"});
        }
        errno = 0;
    }
    if (errno != 0)
        files_.push_back({path, {}, "the folder can't be read to its end: " + std::generic_category().message(errno)});
}

std::optional<std::size_t> DeviceFiles::find(std::u16string_view name) const
{
    const auto found = index_.find(archive::NameHash(ItemKindFile, name));
    return found == index_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::size_t> DeviceFiles::inRom(const std::vector<bool>& isCovered) const
{
    std::vector<std::size_t> found;
    if (!platform::file::addMount({u"", ::fcntl(root_.get(), F_DUPFD_CLOEXEC, 0), false, std::nullopt}))
        return found;
    for (std::size_t file = 0; file < files_.size(); file++) {
        archive::checkStop();
        if (isCovered[file] || !files_[file].fault.empty())
            continue;
        const DWORD attributes = GetFileAttributesW(deviceNameOf(files_[file].path).c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_INROM) != 0)
            found.push_back(file);
    }
    platform::file::removeAllMounts();
    return found;
}

platform::host::Descriptor DeviceFiles::open(std::size_t file) const
{
    return platform::host::Descriptor(
        ::openat(root_.get(), files_[file].path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
}

std::vector<std::string> DeviceFiles::changedSince() const
{
    const DeviceFiles now(store_.parent_path());
    std::unordered_map<std::string_view, const DeviceFile*> before;
    for (const DeviceFile& file : files_)
        before[file.path] = &file;
    std::vector<std::string> changed;
    for (const DeviceFile& file : now.files_) {
        const auto old = before.find(file.path);
        if (old == before.end() || old->second->stamp != file.stamp)
            changed.push_back(file.path);
        if (old != before.end())
            before.erase(old);
    }
    for (const auto& [path, file] : before)
        changed.emplace_back(path);
    return changed;
}

}  // namespace quillbox_device
