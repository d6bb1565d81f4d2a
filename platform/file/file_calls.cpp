// Implements the calls of ce/file.h and ce/file_stamp.h. No other source file of platform/file sets the last error.
#include "ce/file.h"

#include "entries.h"
#include "file_trouble.h"
#include "folder_search.h"
#include "free_space.h"
#include "opening.h"
#include "parent_folder.h"
#include "unchanged_deletion.h"
#include "volume_flush.h"

#include "ce/error.h"
#include "ce/file_stamp.h"

using namespace platform;
using namespace platform::file;

namespace {

BOOL fail(DWORD error)
{
    SetLastError(error);
    return FALSE;
}

BOOL succeedUnless(DWORD error)
{
    return error == 0 ? TRUE : fail(error);
}

BOOL succeedUnless(DWORD error, Trouble kind, const OpenFile& file)
{
    if (error != 0)
        kernel::noteTrouble(kind, kernel::Troubled::File, file.path(), error);
    return succeedUnless(error);
}

std::u16string_view folderOf(std::u16string_view pattern)
{
    const std::size_t end = pattern.rfind(u'\\');
    return end == 0 || end == std::u16string_view::npos ? u"\\" : pattern.substr(0, end);
}

std::shared_ptr<OpenFile> findOpenFile(HANDLE file)
{
    return kernel::findHandle<OpenFile>(file);
}

}  // namespace

HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, const void*, DWORD creation, DWORD, HANDLE)
{
    const Sharing sharing{access & (GENERIC_READ | GENERIC_WRITE), share & (FILE_SHARE_READ | FILE_SHARE_WRITE)};
    const bool writes = (access & GENERIC_WRITE) != 0;
    Opened opened = openFile(resolvePath(boundedPath(path)), sharing, creation);
    if (opened.error != 0) {
        // A conflict between handles of this process isn't a failure of the device.
        if (!opened.isOpenHere && (writes || !opened.isRomModule))
            noteFileTrouble(writes ? Trouble::Writing : Trouble::Reading, boundedPath(path), opened.error);
        SetLastError(opened.error);
        return INVALID_HANDLE_VALUE;
    }
    if (writes)
        noteFileMade(boundedPath(path));
    const bool reportsExistence = creation == CREATE_ALWAYS || creation == OPEN_ALWAYS;
    SetLastError(reportsExistence && opened.existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return kernel::addHandle(std::move(opened.file));
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD bytes, DWORD* bytesRead, void*)
{
    if (!bytesRead)
        return fail(ERROR_INVALID_PARAMETER);
    *bytesRead = 0;
    if (!buffer && bytes != 0)
        return fail(ERROR_INVALID_PARAMETER);
    const auto open = findOpenFile(file);
    if (!open)
        return fail(ERROR_INVALID_HANDLE);
    const ReadResult result = open->read({static_cast<std::byte*>(buffer), bytes});
    *bytesRead = static_cast<DWORD>(result.bytes);
    return succeedUnless(result.error, Trouble::Reading, *open);
}

BOOL WriteFile(HANDLE file, const void* bytes, DWORD count, DWORD* bytesWritten, void*)
{
    if (!bytesWritten)
        return fail(ERROR_INVALID_PARAMETER);
    *bytesWritten = 0;
    if (!bytes && count != 0)
        return fail(ERROR_INVALID_PARAMETER);
    const auto open = findOpenFile(file);
    if (!open)
        return fail(ERROR_INVALID_HANDLE);
    const Written written = open->write({static_cast<const std::byte*>(bytes), count});
    *bytesWritten = static_cast<DWORD>(written.bytes);  // after an error, the bytes written before it
    return succeedUnless(written.error, Trouble::Writing, *open);
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method)
{
    const auto open = findOpenFile(file);
    if (!open) {
        SetLastError(ERROR_INVALID_HANDLE);
        return INVALID_SET_FILE_POINTER;
    }
    std::int64_t whole = distance;
    if (distanceHigh)
        whole = static_cast<std::int64_t>((static_cast<std::uint64_t>(static_cast<DWORD>(*distanceHigh)) << 32) |
                                          static_cast<DWORD>(distance));
    else if (method == FILE_BEGIN)
        whole = static_cast<DWORD>(distance);
    const OpenFile::Sought sought = open->seek(whole, method);
    if (sought.error != 0) {
        if (sought.error != ERROR_INVALID_PARAMETER &&
            sought.error != ERROR_NEGATIVE_SEEK)  // both are mistakes of the program, not failures of the device
            kernel::noteTrouble(Trouble::Reading, kernel::Troubled::File, open->path(), sought.error);
        SetLastError(sought.error);
        return INVALID_SET_FILE_POINTER;
    }
    if (distanceHigh)
        *distanceHigh = static_cast<LONG>(sought.position >> 32);
    const auto low = static_cast<DWORD>(sought.position);
    if (low == INVALID_SET_FILE_POINTER)
        SetLastError(ERROR_SUCCESS);
    return low;
}

BOOL SetEndOfFile(HANDLE file)
{
    const auto open = findOpenFile(file);
    return open ? succeedUnless(open->endHere(), Trouble::Writing, *open) : fail(ERROR_INVALID_HANDLE);
}

BOOL FlushFileBuffers(HANDLE file)
{
    const auto open = findOpenFile(file);
    return open ? succeedUnless(open->flush(), Trouble::Writing, *open) : fail(ERROR_INVALID_HANDLE);
}

BOOL HandOverFileBuffers(HANDLE file)
{
    const auto open = findOpenFile(file);
    return open ? succeedUnless(open->handOver(), Trouble::Writing, *open) : fail(ERROR_INVALID_HANDLE);
}

BOOL WriteAfter(HANDLE file, HANDLE earlier)
{
    const auto open = findOpenFile(file);
    const auto openEarlier = findOpenFile(earlier);
    return open && openEarlier ? succeedUnless(open->writeAfter(*openEarlier)) : fail(ERROR_INVALID_HANDLE);
}

BOOL MarkUnfinished(HANDLE file)
{
    const auto open = findOpenFile(file);
    return open ? succeedUnless(open->markUnfinished()) : fail(ERROR_INVALID_HANDLE);
}

BOOL MarkFinished(HANDLE file)
{
    const auto open = findOpenFile(file);
    return open ? succeedUnless(open->markFinished(), Trouble::Writing, *open) : fail(ERROR_INVALID_HANDLE);
}

BOOL DropFromCache(HANDLE file)
{
    const auto open = findOpenFile(file);
    return open ? succeedUnless(open->dropFromCache(), Trouble::Reading, *open) : fail(ERROR_INVALID_HANDLE);
}

BOOL FlushChangedVolumes(void)
{
    const std::vector<FailedFlush> failed = flushChangedVolumes();
    for (const FailedFlush& each : failed)
        kernel::noteTrouble(Trouble::Writing, kernel::Troubled::File, u'\\' + each.mount->name(), each.error);
    return succeedUnless(failed.empty() ? ERROR_SUCCESS : failed.front().error);
}

BOOL GetFileStamp(HANDLE file, FileStamp* stamp)
{
    const auto open = findOpenFile(file);
    if (!open)
        return fail(ERROR_INVALID_HANDLE);
    return stamp ? succeedUnless(open->stamp(*stamp), Trouble::Reading, *open) : fail(ERROR_INVALID_PARAMETER);
}

BOOL IsFileUnchanged(const WCHAR* path, const FileStamp* stamp)
{
    return stamp && isUnchangedAt(resolvePath(boundedPath(path)), *stamp) ? TRUE : FALSE;
}

BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION* information)
{
    const auto open = findOpenFile(file);
    if (!open)
        return fail(ERROR_INVALID_HANDLE);
    return information ? succeedUnless(open->describe(*information), Trouble::Reading, *open)
                       : fail(ERROR_INVALID_PARAMETER);
}

BOOL GetDiskFreeSpaceExW(const WCHAR* path, std::uint64_t* available, std::uint64_t* total, std::uint64_t* totalFree)
{
    const FreeSpace space = freeSpaceAt(resolvePath(boundedPath(path)));
    if (space.error != 0)
        return fail(space.error);
    for (std::uint64_t* free : {available, totalFree}) {
        if (free)
            *free = space.available;
    }
    if (total)
        *total = space.total;
    return TRUE;
}

BOOL DeclareTemporaryFile(const WCHAR* path)
{
    const HostPath hostPath = resolvePath(boundedPath(path));
    if (const DWORD error = cannotBeAFile(hostPath); error != 0)
        return fail(error);
    OpenFiles& table = OpenFiles::instance();
    const kernel::MutexLock lock(table.mutex());
    table.temporaries().declare(hostPath);
    return TRUE;
}

BOOL WithdrawTemporaryFile(const WCHAR* path)
{
    const HostPath hostPath = resolvePath(boundedPath(path));
    OpenFiles& table = OpenFiles::instance();
    const kernel::MutexLock lock(table.mutex());
    return succeedUnless(table.withdrawTemporary(hostPath));
}

BOOL DeleteFileW(const WCHAR* path)
{
    const Deleted deleted = deleteFileAt(resolvePath(boundedPath(path)));
    if (!deleted.isOpenHere && deleted.error != ERROR_PATH_NOT_FOUND)
        noteFileTrouble(Trouble::Writing, boundedPath(path), deleted.error);
    return succeedUnless(deleted.error);
}

BOOL DeleteUnchangedFile(const WCHAR* path, const FileStamp* stamp)
{
    if (!stamp)
        return fail(ERROR_INVALID_PARAMETER);
    const DWORD error = deleteUnchangedAt(resolvePath(boundedPath(path)), *stamp);
    const bool isForTheCaller = error == ERROR_PATH_NOT_FOUND || error == ERROR_SHARING_VIOLATION ||
                                error == ERROR_FILE_INVALID || error == ERROR_RETRY;
    if (!isForTheCaller)
        noteFileTrouble(Trouble::Writing, boundedPath(path), error);
    return succeedUnless(error);
}

BOOL CreateDirectoryW(const WCHAR* path, const void*)
{
    const DWORD error = makeFolderAt(resolvePath(boundedPath(path)));
    if (error != ERROR_PATH_NOT_FOUND)  // a failure to make the parent folder was noted already
        noteFileTrouble(Trouble::Writing, boundedPath(path), error);
    return succeedUnless(error);
}

BOOL RemoveDirectoryW(const WCHAR* path)
{
    const DWORD error = removeFolderAt(resolvePath(boundedPath(path)));
    if (error != ERROR_DIR_NOT_EMPTY)  // not a failure: programs find out in this way if a folder is empty
        noteFileTrouble(Trouble::Writing, boundedPath(path), error);
    return succeedUnless(error);
}

DWORD GetFileAttributesW(const WCHAR* path)
{
    const Attributes attributes = attributesAt(resolvePath(boundedPath(path)));
    if (attributes.error == 0)
        return attributes.bits;
    noteFileTrouble(Trouble::Reading, boundedPath(path), attributes.error);
    SetLastError(attributes.error);
    return INVALID_FILE_ATTRIBUTES;
}

BOOL IsNothingAt(const WCHAR* path)
{
    return isNothingAt(resolvePath(boundedPath(path))) ? TRUE : FALSE;
}

HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* found)
{
    return FindFirstFileExW(pattern, FindExInfoStandard, found, FindExSearchNameMatch, nullptr, 0);
}

HANDLE FindFirstFileExW(const WCHAR* pattern, FINDEX_INFO_LEVELS level, void* found, FINDEX_SEARCH_OPS operation,
                        const void* filter, DWORD flags)
{
    const bool isGood =
        found && level == FindExInfoStandard && operation <= FindExSearchLimitToDirectories && !filter && flags == 0;
    const Wanted wanted = operation == FindExSearchLimitToDirectories ? Wanted::Folders : Wanted::All;
    SearchBegun begun =
        isGood ? beginSearch(boundedPath(pattern), wanted) : SearchBegun{ERROR_INVALID_PARAMETER, nullptr};
    DWORD error = begun.error;
    if (error == 0)
        error = begun.search->next(*static_cast<WIN32_FIND_DATAW*>(found));
    if (error == 0)
        return kernel::addHandle(std::move(begun.search));
    noteFileTrouble(Trouble::Reading, folderOf(boundedPath(pattern)), error);
    SetLastError(error == ERROR_NO_MORE_FILES ? ERROR_FILE_NOT_FOUND : error);
    return INVALID_HANDLE_VALUE;
}

BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* found)
{
    const auto open = kernel::findHandle<FolderSearch>(search);
    if (!open)
        return fail(ERROR_INVALID_HANDLE);
    if (!found)
        return fail(ERROR_INVALID_PARAMETER);
    const DWORD error = open->next(*found);
    noteFileTrouble(Trouble::Reading, open->path(), error);
    return succeedUnless(error);
}

BOOL FindClose(HANDLE search)
{
    const auto open = kernel::findHandle<FolderSearch>(search);
    return open && kernel::removeHandle(search) ? TRUE : fail(ERROR_INVALID_HANDLE);
}
