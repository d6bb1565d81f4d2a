#include "folder_search.h"

#include "attributes.h"
#include "host/error.h"
#include "kernel/troubles.h"
#include "mounts.h"
#include "stored_attributes.h"
#include "text/host_name.h"
#include "text/wildcard.h"

#include "ce/error.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

namespace platform::file {

using host::ioError;
using host::platformError;

namespace {

void describeStatus(const HostStatus& status, std::uint64_t size, std::u16string_view name, WIN32_FIND_DATAW& found)
{
    found.ftCreationTime = creationTime(status);
    found.ftLastAccessTime = fileTime(status.stx_atime);
    found.ftLastWriteTime = fileTime(status.stx_mtime);
    found.nFileSizeHigh = static_cast<DWORD>(size >> 32);
    found.nFileSizeLow = static_cast<DWORD>(size);
    found.dwOID = objectId(status);
    *std::ranges::copy(name, found.cFileName).out = 0;
}

bool isPattern(std::u16string_view text)
{
    return !text.empty() && text != u"." && text != u".." &&
           text.find_first_of(std::u16string_view(u"/\"<>|")) == std::u16string_view::npos;
}

// "*.*" matches every name, also one without a dot. "*" is compared first, because most searches use it.
bool matchesPattern(std::u16string_view name, std::u16string_view pattern)
{
    return pattern == u"*" || pattern == u"*.*" || text::matchesWildcards(name, pattern, text::Case::Ignored);
}

}  // namespace

FolderSearch::FolderSearch(const HostPath& folder, Descriptor opened, std::u16string pattern, Wanted wanted)
    : table_(OpenFiles::instance()), mount_(folder.mount), isRoot_(folder.isMount() && mount_->name().empty()),
      path_(devicePathOf(folder)), pattern_(std::move(pattern)), wanted_(wanted), reader_(std::move(opened), wanted),
      mounts_(mountsInRoot())
{
}

DWORD FolderSearch::next(WIN32_FIND_DATAW& found)
{
    const std::lock_guard lock(mutex_);
    if (isRoot_ && nextMount(found))
        return 0;
    while (const auto hostName = reader_.next()) {
        if (isRoot_ && hiddenByMount(*hostName))
            continue;
        const std::u16string name = text::toDeviceName(*hostName);
        if (name.size() < MAX_PATH && matchesPattern(name, pattern_) && describe(*hostName, name, found))
            return 0;
    }
    return reader_.error() == 0 || reader_.error() == -ENOENT ? ERROR_NO_MORE_FILES : ioError(reader_.error());
}

bool FolderSearch::nextMount(WIN32_FIND_DATAW& found)
{
    while (mountsSeen_ < mounts_.size()) {
        const MountedFolder* const listed = mounts_[mountsSeen_++];
        if (!matchesPattern(listed->name(), pattern_))
            continue;
        const MountUse mount = findMount(listed->name()).folder;
        if (mount.get() != listed)
            continue;
        HostStatus status = {};
        if (const int result = readStatus(mount->folder(), "", status); result != 0) {
            noteUnread(mount->name(), result);
            continue;
        }
        describeStatus(status, 0, mount->name(), found);
        found.dwFileAttributes =
            attributes(mount->folder(), "", mount->name(), status) | (mount->isCard() ? FILE_ATTRIBUTE_TEMPORARY : 0);
        return true;
    }
    return false;
}

// Fills `found`. Returns false if the entry isn't to be listed. Such an entry is of another type than wanted, was
// deleted after the folder was read, or has a status that can't be read. In the last case, the failure is noted.
bool FolderSearch::describe(std::string_view hostName, std::u16string_view name, WIN32_FIND_DATAW& found)
{
    HostStatus status = {};
    if (const int result = readStatus(reader_.folder(), hostName.data(), status); result != 0) {
        if (result != -ENOENT)
            noteUnread(name, result);
        return false;
    }
    if (!isFolder(status) && (!isFile(status) || wanted_ == Wanted::Folders))
        return false;
    const std::uint64_t size = isFile(status) ? table_.sizeOfWritten(keyOf(status)).value_or(status.stx_size) : 0;
    describeStatus(status, size, name, found);
    found.dwFileAttributes = attributes(reader_.folder(), hostName.data(), name, status);
    return true;
}

DWORD FolderSearch::attributes(int folder, const char* hostName, std::u16string_view name,
                               const HostStatus& status) const
{
    const StoredAttributes stored = storedAttributes(folder, hostName, status);
    if (stored.error != 0)
        noteUnread(name, stored.error);
    return attributesOf(status, stored.bits, name.starts_with(u'.'));
}

void FolderSearch::noteUnread(std::u16string_view name, int error) const
{
    std::u16string path = path_ == u"\\" ? path_ : path_ + u'\\';
    kernel::noteTrouble(kernel::Trouble::Reading, kernel::Troubled::File, path.append(name), ioError(error));
}

SearchBegun beginSearch(std::u16string_view pathWithPattern, Wanted wanted)
{
    if (pathWithPattern.size() >= MAX_PATH)
        return {ERROR_FILENAME_EXCED_RANGE, nullptr};
    const std::size_t nameStart = pathWithPattern.rfind(u'\\') + 1;  // 0 without a backslash
    const std::u16string_view pattern = pathWithPattern.substr(nameStart);
    if (!isPattern(pattern))
        return {ERROR_INVALID_NAME, nullptr};
    const HostPath folder = resolvePath(nameStart == 0 ? u"\\" : pathWithPattern.substr(0, nameStart));
    if (folder.error != 0)
        return {folder.error, nullptr};
    if (const DWORD error = OpenFiles::instance().nameInFolder(folder); error != 0)
        return {error, nullptr};
    Descriptor opened(
        openBelow(folder.mount->folder(), folder.isMount() ? "." : folder.below.c_str(), O_RDONLY | O_DIRECTORY));
    if (!opened) {
        const DWORD error = platformError(opened.get());
        return {error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : error, nullptr};
    }
    return {0, std::make_shared<FolderSearch>(folder, std::move(opened), std::u16string(pattern), wanted)};
}

}  // namespace platform::file
