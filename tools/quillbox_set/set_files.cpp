// set_files.cpp - see set_files.h.

#include "set_files.h"

#include "host_name.h"
#include "name_space.h"

#include "ce/file.h"
#include "ce/handle.h"

#include <fcntl.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <utility>

namespace quillbox_set {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view listEnding = "QLT";
constexpr std::string_view dataEnding = "QDT";

std::string withEnding(std::string name, std::string_view ending)
{
    return name.replace(name.size() - ending.size(), ending.size(), ending);
}

// A link to a list file is followed here, at the user's word; below the mounts none is.
std::optional<SetFiles> filesOf(const fs::path& list)
{
    std::error_code error;
    const fs::path real = fs::canonical(list, error);
    if (error || !fs::is_regular_file(real, error))
        return std::nullopt;
    const std::string name = real.filename().string();
    if (!name.ends_with(listEnding))
        return std::nullopt;
    return SetFiles{real.parent_path().string(), name, withEnding(name, dataEnding)};
}

int openFolder(const std::string& path)
{
    return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

}  // namespace

std::optional<SetFiles> findSet(const std::string& argument)
{
    if (argument.ends_with(listEnding) || argument.ends_with(dataEnding)) {
        if (auto files = filesOf(withEnding(argument, listEnding)))
            return files;
    }
    return filesOf(argument + "." + std::string(listEnding));
}

std::u16string unguessableName()
{
    std::random_device random;
    char digits[9];
    (void)std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(random()));
    return platform::text::fromUtf8(digits);
}

std::optional<MountedSet> mountSet(const SetFiles& files, const std::string& root)
{
    using platform::file::addMount;
    MountedSet set;
    set.folder = unguessableName();
    const std::u16string folder = u"\\" + set.folder + u"\\";
    set.listPath = folder + platform::text::toDeviceName(files.listName);
    set.dataPath = folder + platform::text::toDeviceName(files.dataName);
    if (!addMount({u"", openFolder(root), false, std::nullopt}) ||
        !addMount({set.folder, openFolder(files.folder), false, std::nullopt}))
        return std::nullopt;
    return set;
}

OpenFile::OpenFile(const std::u16string& path, DWORD access, DWORD creation)
    : handle_(CreateFileW(path.c_str(), access, access == GENERIC_READ ? FILE_SHARE_READ : 0, nullptr, creation, 0,
                          nullptr))
{
}

OpenFile::OpenFile(OpenFile&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept
{
    std::swap(handle_, other.handle_);
    return *this;
}

OpenFile::~OpenFile()
{
    (void)close();
}

bool OpenFile::isOpen() const
{
    return handle_ != INVALID_HANDLE_VALUE;
}

std::uint64_t OpenFile::size() const
{
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!GetFileInformationByHandle(handle_, &information))
        return 0;
    return std::uint64_t{information.nFileSizeHigh} << 32 | information.nFileSizeLow;
}

bool OpenFile::close()
{
    return !isOpen() || CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE));
}

}  // namespace quillbox_set
