#include "archive/set_files.h"

#include "file/name_space.h"
#include "host/files.h"
#include "text/case_folding.h"
#include "text/host_name.h"

#include "ce/file.h"
#include "ce/handle.h"

#include <fcntl.h>

#include <algorithm>
#include <filesystem>
#include <utility>

namespace archive {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view listEnding = "QLT";
constexpr std::string_view dataEnding = "QDT";
constexpr std::string_view sumEnding = "SUM";

bool endsIn(std::string_view name, std::string_view ending)
{
    return name.size() >= ending.size() && isSameWithoutCase(name.substr(name.size() - ending.size()), ending);
}

// Returns the name with another extension. The new extension is in small letters if the old one is.
std::string withEnding(const std::string& name, std::string_view ending)
{
    std::string other = name.substr(0, name.size() - ending.size());
    const bool small = name.back() >= 'a' && name.back() <= 'z';
    for (const char letter : ending)
        other += small ? static_cast<char>(letter + ('a' - 'A')) : letter;
    return other;
}

std::u16string folded(const std::string& name)
{
    std::u16string text = platform::text::fromUtf8(name);
    std::ranges::transform(text, text.begin(), platform::text::foldCase);
    return text;
}

int openFolder(const std::string& path)
{
    return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

// Returns the set of this list file. The other two files are in the same folder.
SetFiles withList(FolderNames& home, const std::string& listName)
{
    const auto beside = [&](std::string_view ending) {
        const std::string wanted = withEnding(listName, ending);
        return home.like(wanted).value_or(wanted);
    };
    return {home.folder(), listName, beside(dataEnding), beside(sumEnding)};
}

}  // namespace

bool isSameWithoutCase(std::string_view left, std::string_view right)
{
    using namespace platform::text;
    return compareWithoutCase(fromUtf8(left), fromUtf8(right)) == 0;
}

bool isListFile(std::string_view name)
{
    return endsIn(name, listEnding);
}

const std::vector<std::string>& FolderNames::sorted()
{
    read();
    return names_;
}

bool FolderNames::readFailed()
{
    read();
    return readFailed_;
}

std::optional<std::string> FolderNames::like(const std::string& wanted)
{
    std::error_code error;
    if (fs::exists(fs::path(folder_) / wanted, error))
        return wanted;
    read();
    const auto found = withoutCase_.find(folded(wanted));
    return found == withoutCase_.end() ? std::nullopt : std::optional(found->second);
}

void FolderNames::read()
{
    if (std::exchange(isRead_, true))
        return;
    std::error_code error;
    for (fs::directory_iterator entry(folder_, error); !error && entry != fs::directory_iterator();
         entry.increment(error))
        names_.push_back(entry->path().filename().string());
    readFailed_ = static_cast<bool>(error);
    reason_ = error.message();
    std::ranges::sort(names_);
    for (const std::string& name : names_)
        withoutCase_.try_emplace(folded(name), name);
}

std::optional<SetFiles> findSet(const std::string& argument)
{
    const auto listAt = [](const fs::path& path) {
        FolderNames folder(path.has_parent_path() ? path.parent_path().string() : ".");
        return findSet(folder, path.filename().string());
    };
    if (endsIn(argument, listEnding) || endsIn(argument, dataEnding)) {
        if (auto files = listAt(withEnding(argument, listEnding)))
            return files;
    }
    return listAt(argument + "." + std::string(listEnding));
}

// Follows a link to a list file, because the user gave the path of the link. The platform's calls, which later open the
// files, follow no link.
std::optional<SetFiles> findSet(FolderNames& folder, const std::string& listName)
{
    const auto found = folder.like(listName);
    if (!found)
        return std::nullopt;
    std::error_code error;
    const fs::path real = fs::canonical(fs::path(folder.folder()) / *found, error);
    if (error || !fs::is_regular_file(real, error) || !isListFile(real.filename().string()))
        return std::nullopt;
    if (real.parent_path() == folder.folder())
        return withList(folder, real.filename().string());
    FolderNames home(real.parent_path().string());
    return withList(home, real.filename().string());
}

std::optional<SetFiles> findData(const std::string& path)
{
    std::error_code error;
    const fs::path real = fs::canonical(path, error);
    if (error || !fs::is_regular_file(real, error))
        return std::nullopt;
    const std::string name = real.filename().string();
    FolderNames home(real.parent_path().string());
    if (endsIn(name, dataEnding)) {
        SetFiles files = withList(home, withEnding(name, listEnding));
        files.dataName = name;
        return files;
    }
    return SetFiles{home.folder(), "", name, ""};
}

SetFiles newSet(const std::string& stem)
{
    const fs::path path(stem);
    const auto hasEnding = [&](std::string_view ending) { return endsIn(stem, "." + std::string(ending)); };
    const bool isWhole = hasEnding(listEnding) || hasEnding(dataEnding);
    const std::string name = (isWhole ? path.stem() : path.filename()).string() + ".";
    return {path.has_parent_path() ? path.parent_path().string() : ".", name + std::string(listEnding),
            name + std::string(dataEnding), name + std::string(sumEnding)};
}

std::u16string unguessableName()
{
    return platform::text::fromUtf8(platform::host::unguessableName());
}

std::optional<MountedSet> mountSet(const SetFiles& files, const std::string& root)
{
    using platform::file::addMount;
    const std::u16string name = unguessableName();
    MountedSet set;
    set.folder = files.shownFolder.empty() ? u"\\" + name : files.shownFolder;
    const std::u16string folder = set.folder + u"\\";
    set.listPath = folder + platform::text::toDeviceName(files.listName);
    set.dataPath = folder + platform::text::toDeviceName(files.dataName);
    set.sumPath = folder + platform::text::toDeviceName(files.sumName);
    if (!files.shownFolder.empty())
        return set;
    const bool hasRoot = platform::file::rootFolder() >= 0;
    if ((!hasRoot && !addMount({u"", openFolder(root), false, std::nullopt})) ||
        !addMount({name, openFolder(files.folder), false, std::nullopt}))
        return std::nullopt;
    return set;
}

SetMount::SetMount(const SetFiles& files, const std::string& root)
    : set_(mountSet(files, root)), mounts_(files.shownFolder.empty())
{
    mounted_ += mounts_ ? 1 : 0;
}

SetMount::~SetMount()
{
    if (mounts_ && --mounted_ == 0)
        platform::file::removeAllMounts();
}

OpenFile::OpenFile(const std::u16string& path, DWORD access, DWORD creation)
    : handle_(CreateFileW(path.c_str(), access, access == GENERIC_READ ? FILE_SHARE_READ : 0, nullptr, creation, 0,
                          nullptr)),
      error_(isOpen() ? ERROR_SUCCESS : GetLastError())
{
}

OpenFile::OpenFile(OpenFile&& other) noexcept
    : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)), error_(other.error_)
{
}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept
{
    std::swap(handle_, other.handle_);
    std::swap(error_, other.error_);
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

}  // namespace archive
