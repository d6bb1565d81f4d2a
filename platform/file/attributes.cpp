// attributes.cpp - see attributes.h
#include "attributes.h"

#include "known_attributes.h"

#include "ce/file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <string_view>

namespace platform::file {

namespace {

constexpr const char* AttributeName = "user.DOSATTRIB";

constexpr DWORD StoredBits = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                             FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_INROM | FILE_ATTRIBUTE_COMPRESSED |
                             FILE_ATTRIBUTE_ROMSTATICREF | FILE_ATTRIBUTE_ROMMODULE;

DWORD parseStored(std::string_view text)
{
    while (text.ends_with('\0'))  // file servers write the text with its end
        text.remove_suffix(1);
    if (!text.starts_with("0x"))
        return 0;
    text.remove_prefix(2);
    DWORD bits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits, 16);
    return error == std::errc() && end == text.data() + text.size() ? bits & StoredBits : 0;
}

// The entry has none, or none of that form, or can't have one: on its file system, for this user, or since it is gone.
bool meansNoAttribute(long error)
{
    constexpr std::array<long, 9> Reasons = {ENODATA, ERANGE, EOPNOTSUPP, ENOSYS, EINVAL, EACCES, EPERM, ENOENT, EBADF};
    return std::ranges::find(Reasons, -error) != Reasons.end();
}

std::uint64_t ticks(const statx_timestamp& time)
{
    // From 1601 to 1970. Times before 1601 have no form here.
    constexpr std::int64_t SecondsBefore = 11644473600;
    const std::int64_t seconds = time.tv_sec + SecondsBefore;
    return seconds < 0 ? 0 : static_cast<std::uint64_t>(seconds) * 10'000'000 + time.tv_nsec / 100;
}

}  // namespace

StoredAttributes storedAttributes(int folder, const char* name, const HostStatus& status)
{
    KnownAttributes& known = KnownAttributes::instance();
    if (const auto bits = known.find(status))
        return {*bits};
    const bool settled = KnownAttributes::isSettled(folder, status);
    std::array<char, 32> value{};  // a longer value is no such text
    const ssize_t length = readExtended(folder, name, AttributeName, value);
    const DWORD bits = length > 0 ? parseStored({value.data(), static_cast<std::size_t>(length)}) : 0;
    if (settled && (length >= 0 || length == -ENODATA))
        known.note(status, bits);
    return {bits, length < 0 && !meansNoAttribute(length) ? static_cast<int>(length) : 0};
}

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
    // A file system gives a freed inode to the next file, so the birth time takes part.
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
