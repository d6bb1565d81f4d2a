#include "host_calls.h"

#include "host/files.h"
#include "host_gate.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>

namespace platform::file {

namespace {

// The system call getxattrat, which the C library's headers don't declare yet.
constexpr long NumberOfGetxattrat = 464;
struct ExtendedArguments {
    std::uint64_t value;
    std::uint32_t size;
    std::uint32_t flags;
};

template <class Call>
auto unlessInterrupted(const Call& call) -> decltype(call())
{
    for (;;) {
        const auto result = call();
        if (result >= 0)
            return result;
        if (errno != EINTR)
            return -errno;
    }
}

// Reads an extended attribute through the path of the folder's descriptor in /proc. Linux before 6.13 needs this,
// because it doesn't have getxattrat.
ssize_t readExtendedByProc(int folder, const char* name, const char* attribute, std::span<char> value)
{
    std::array<char, 320> path{};  // a name has at most 255 bytes
    const bool ofDescriptor = *name == '\0';
    (void)std::snprintf(path.data(), path.size(), ofDescriptor ? "/proc/self/fd/%d" : "/proc/self/fd/%d/%s", folder,
                        name);
    return unlessInterrupted([&] {
        return ofDescriptor ? ::getxattr(path.data(), attribute, value.data(), value.size())
                            : ::lgetxattr(path.data(), attribute, value.data(), value.size());
    });
}

}  // namespace

int openBelow(int folder, const char* path, int flags, unsigned mode)
{
    if (const int error = passGate())
        return -error;
    open_how how = {};
    how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC);
    if ((flags & O_PATH) == 0)
        how.flags |= O_NONBLOCK | O_NOCTTY;
    how.mode = mode;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    const auto opened =
        static_cast<int>(unlessInterrupted([&] { return ::syscall(SYS_openat2, folder, path, &how, sizeof how); }));
    if (opened >= 0 && (flags & O_CREAT) != 0)
        reportToWatcher([&](HostCallWatcher& watcher) {
            watcher.afterMaking(folder, path);
            watcher.beforeChange(opened);
        });
    return opened;
}

int readStatus(int folder, const char* name, HostStatus& status, Status wanted)
{
    if (const int error = passGate())
        return -error;
    return unlessInterrupted([&] {
        const int sync = wanted == Status::Fresh ? AT_STATX_FORCE_SYNC : AT_STATX_SYNC_AS_STAT;
        return ::statx(folder, name, AT_SYMLINK_NOFOLLOW | AT_EMPTY_PATH | AT_NO_AUTOMOUNT | sync,
                       STATX_BASIC_STATS | STATX_BTIME, &status);
    });
}

ssize_t readExtended(int folder, const char* name, const char* attribute, std::span<char> value)
{
    if (const int error = passGate())
        return -error;
    static std::atomic<bool> missing = false;
    if (!missing.load(std::memory_order_relaxed)) {
        ExtendedArguments arguments = {reinterpret_cast<std::uint64_t>(value.data()),
                                       static_cast<std::uint32_t>(value.size()), 0};
        const ssize_t length = unlessInterrupted([&] {
            return ::syscall(NumberOfGetxattrat, folder, name, AT_SYMLINK_NOFOLLOW | AT_EMPTY_PATH, attribute,
                             &arguments, sizeof arguments);
        });
        if (length != -ENOSYS)
            return length;
        missing.store(true, std::memory_order_relaxed);
    }
    return readExtendedByProc(folder, name, attribute, value);
}

int writeExtended(int fileOrFolder, const char* attribute, std::span<const char> value)
{
    if (const int error = passGate())
        return -error;
    return unlessInterrupted([&] { return ::fsetxattr(fileOrFolder, attribute, value.data(), value.size(), 0); });
}

int removeExtended(int fileOrFolder, const char* attribute)
{
    if (const int error = passGate())
        return -error;
    return unlessInterrupted([&] { return ::fremovexattr(fileOrFolder, attribute); });
}

ssize_t readAt(int file, std::span<std::byte> bytes, std::uint64_t offset)
{
    if (const int error = passGate(HostCall::Read))
        return error == GivesNothing ? 0 : -error;
    return unlessInterrupted([&] { return ::pread(file, bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
}

ssize_t writeAt(int file, std::span<const iovec> bytes, std::uint64_t offset)
{
    if (const int error = passGate())
        return -error;
    reportToWatcher([&](HostCallWatcher& watcher) { watcher.beforeChange(file); });
    return unlessInterrupted([&] {
        const auto start = static_cast<off_t>(offset);
        return bytes.size() == 1 ? ::pwrite(file, bytes[0].iov_base, bytes[0].iov_len, start)
                                 : ::pwritev(file, bytes.data(), static_cast<int>(bytes.size()), start);
    });
}

int writeAllAt(int file, std::span<const std::byte> bytes, std::uint64_t offset)
{
    while (!bytes.empty()) {
        const iovec vector = {const_cast<std::byte*>(bytes.data()), bytes.size()};
        const ssize_t written = writeAt(file, {&vector, 1}, offset);
        if (written <= 0)
            return written < 0 ? static_cast<int>(written) : -ENOSPC;
        offset += static_cast<std::uint64_t>(written);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return 0;
}

int setSize(int file, std::uint64_t size)
{
    if (const int error = passGate())
        return -error;
    reportToWatcher([&](HostCallWatcher& watcher) { watcher.beforeChange(file); });
    const int result = unlessInterrupted([&] { return ::ftruncate(file, static_cast<off_t>(size)); });
    if (result == 0)
        reportToWatcher([&](HostCallWatcher& watcher) { watcher.afterResize(file, size); });
    return result;
}

int reserve(int file, std::uint64_t offset, std::uint64_t bytes)
{
    if (const int error = passGate())
        return -error;
    return unlessInterrupted(
        [&] { return ::fallocate(file, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset), static_cast<off_t>(bytes)); });
}

int flushToDisk(int fileOrFolder)
{
    if (const int error = passGate())
        return -error;
    const int result = unlessInterrupted([&] { return ::fsync(fileOrFolder); });
    if (result == 0)
        reportToWatcher([&](HostCallWatcher& watcher) { watcher.afterFlush(fileOrFolder); });
    return result;
}

int dropCached(int file)
{
    if (const int error = passGate())
        return -error;
    return -::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
}

int flushFileSystem(int fileOrFolder)
{
    if (const int error = passGate())
        return -error;
    const int result = unlessInterrupted([&] { return ::syncfs(fileOrFolder); });
    if (result == 0)
        reportToWatcher([&](HostCallWatcher& watcher) { watcher.afterFileSystemFlush(fileOrFolder); });
    return result;
}

int makeFolder(int folder, const char* name)
{
    if (const int error = passGate())
        return -error;
    const int result = unlessInterrupted([&] { return ::mkdirat(folder, name, 0777); });
    if (result == 0)
        reportToWatcher([&](HostCallWatcher& watcher) { watcher.afterMaking(folder, name); });
    return result;
}

int removeFile(int folder, const char* name)
{
    if (const int error = passGate())
        return -error;
    return unlessInterrupted([&] { return ::unlinkat(folder, name, 0); });
}

int removeEmptyFolder(int folder, const char* name)
{
    if (const int error = passGate())
        return -error;
    return unlessInterrupted([&] { return ::unlinkat(folder, name, AT_REMOVEDIR); });
}

int takeRights(int file, const HostStatus& old)
{
    if (const int error = passGate())
        return -error;
    return -host::setRights(file, {old.stx_uid, old.stx_gid, old.stx_mode});
}

int moveFile(int folder, const char* name, int newFolder, const char* newName, bool replace)
{
    if (const int error = passGate())
        return -error;
    const int result = unlessInterrupted(
        [&] { return ::renameat2(folder, name, newFolder, newName, replace ? 0 : RENAME_NOREPLACE); });
    if (result == 0)
        reportToWatcher([&](HostCallWatcher& watcher) { watcher.afterMove(folder, name, newFolder, newName); });
    return result;
}

int linkFile(int folder, const char* name, const char* newName)
{
    if (const int error = passGate())
        return -error;
    const int result = unlessInterrupted([&] { return ::linkat(folder, name, folder, newName, 0); });
    if (result == 0)
        reportToWatcher([&](HostCallWatcher& watcher) { watcher.afterMaking(folder, newName); });
    return result;
}

int nameFile(int file, int folder, const char* name)
{
    if (const int error = passGate())
        return -error;
    int result = unlessInterrupted([&] { return ::linkat(file, "", folder, name, AT_EMPTY_PATH); });
    if (result == -ENOENT) {  // Linux before 6.10 allows AT_EMPTY_PATH only to the administrator
        std::array<char, 32> path{};
        (void)std::snprintf(path.data(), path.size(), "/proc/self/fd/%d", file);
        result = unlessInterrupted([&] { return ::linkat(AT_FDCWD, path.data(), folder, name, AT_SYMLINK_FOLLOW); });
    }
    if (result == 0)
        reportToWatcher([&](HostCallWatcher& watcher) { watcher.afterMaking(folder, name); });
    return result;
}

ssize_t readEntries(int folder, std::span<std::byte> entries)
{
    if (const int error = passGate())
        return -error;
    return unlessInterrupted([&] { return ::syscall(SYS_getdents64, folder, entries.data(), entries.size()); });
}

std::optional<FileSystem> readFileSystem(int file)
{
    if (passGate() != 0)
        return std::nullopt;
    struct statfs status = {};
    if (unlessInterrupted([&] { return ::fstatfs(file, &status); }) != 0)
        return std::nullopt;
    return FileSystem{static_cast<std::uint32_t>(status.f_type), static_cast<std::uint64_t>(status.f_bsize)};
}

int readSpace(int fileOrFolder, struct statvfs& space)
{
    if (const int error = passGate())
        return -error;
    return unlessInterrupted([&] { return ::fstatvfs(fileOrFolder, &space); });
}

int setLease(int file, int type)
{
    // A call that drops a lease skips passGate, so a test can't make it fail (host_gate.h). If it failed, the lease
    // would remain, and the test would have to wait until the host ends the lease.
    if (const int error = type == F_UNLCK ? 0 : passGate())
        return -error;
    return unlessInterrupted([&] { return ::fcntl(file, F_SETLEASE, type); });
}

int leaseOf(int file)
{
    if (const int error = passGate())
        return -error;
    return unlessInterrupted([&] { return ::fcntl(file, F_GETLEASE); });
}

}  // namespace platform::file
