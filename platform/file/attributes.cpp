#include "attributes.h"

#include "ce/file.h"

namespace platform::file {

namespace {

std::uint64_t ticks(const statx_timestamp& time)
{
    // The seconds from 1601 to 1970. A FILETIME begins in 1601, so an earlier time becomes 0.
    constexpr std::int64_t SecondsBefore = 11644473600;
    const std::int64_t seconds = time.tv_sec + SecondsBefore;
    return seconds < 0 ? 0 : static_cast<std::uint64_t>(seconds) * 10'000'000 + time.tv_nsec / 100;
}

}  // namespace

DWORD attributesOf(const HostStatus& status, DWORD stored, bool leadingPoint)
{
    DWORD attributes = stored;
    if (isFolder(status))
        attributes |= FILE_ATTRIBUTE_DIRECTORY;
    if ((status.stx_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
        attributes |= FILE_ATTRIBUTE_READONLY;
    if (leadingPoint)
        attributes |= FILE_ATTRIBUTE_HIDDEN;
    return attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL;
}

bool isFile(const HostStatus& status)
{
    return S_ISREG(status.stx_mode);
}

bool isFolder(const HostStatus& status)
{
    return S_ISDIR(status.stx_mode);
}

FILETIME fileTime(const statx_timestamp& time)
{
    const std::uint64_t value = ticks(time);
    return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

FILETIME creationTime(const HostStatus& status)
{
    if ((status.stx_mask & STATX_BTIME) != 0)
        return fileTime(status.stx_btime);
    return fileTime(ticks(status.stx_ctime) < ticks(status.stx_mtime) ? status.stx_ctime : status.stx_mtime);
}

DWORD objectId(const HostStatus& status)
{
    // A file system can reuse the inode number of a deleted file, but the new file has another birth time.
    std::uint64_t mixed = status.stx_ino * 0x9E3779B97F4A7C15;
    if ((status.stx_mask & STATX_BTIME) != 0)
        mixed ^= ticks(status.stx_btime) * 0xC2B2AE3D27D4EB4F;
    mixed ^= mixed >> 32;
    return static_cast<DWORD>(mixed) != 0 ? static_cast<DWORD>(mixed) : 1;
}

std::uint64_t deviceOf(const HostStatus& status)
{
    return (std::uint64_t{status.stx_dev_major} << 32) | status.stx_dev_minor;
}

FileKey keyOf(const HostStatus& status)
{
    return {deviceOf(status), status.stx_ino};
}

}  // namespace platform::file
