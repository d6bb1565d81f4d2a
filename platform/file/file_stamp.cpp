#include "file_stamp.h"

#include "attributes.h"

#include <algorithm>
#include <tuple>

namespace platform::file {

namespace {

constexpr std::int64_t Second = 1'000'000'000;

// More than the length of a fine step of file times. The host's clock for file times advances in steps of up to 10 ms,
// and exFAT stores times in steps of 10 ms.
constexpr std::int64_t FineStep = 50'000'000;

// More than the length of a coarse step. FAT stores times in steps of two seconds, some other file systems in whole
// seconds.
constexpr std::int64_t CoarseStep = 4 * Second;

// Returns the time from `from` to `to`, limited to about 11 days in both directions so that it can't overflow. The
// caller compares the result only with FineStep or CoarseStep.
std::int64_t nanosecondsBetween(const statx_timestamp& from, const timespec& to)
{
    const std::int64_t seconds = std::clamp<std::int64_t>(to.tv_sec - from.tv_sec, -1'000'000, 1'000'000);
    return seconds * Second + to.tv_nsec - from.tv_nsec;
}

// Whether it is certain that any later write changes the stamp. A write sets the write time to the present. So a later
// write can leave the write time unchanged only if the last write was less than a step of the clock ago. A program that
// sets the write time back changes the change time, which is also part of the stamp. If the change time has no fraction
// of a second, the file system may store times in coarse steps, and both times must be older than such a step.
bool provesWrites(const HostStatus& status, const timespec& asked)
{
    const std::int64_t age = nanosecondsBetween(status.stx_mtime, asked);
    const bool isCoarse = status.stx_ctime.tv_nsec == 0;
    return isCoarse ? std::min(age, nanosecondsBetween(status.stx_ctime, asked)) > CoarseStep : age > FineStep;
}

}  // namespace

FileStamp stampOf(const HostStatus& status, const timespec& asked)
{
    return {.device = deviceOf(status),
            .inode = status.stx_ino,
            .length = status.stx_size,
            .writeSeconds = status.stx_mtime.tv_sec,
            .changeSeconds = status.stx_ctime.tv_sec,
            .writeNanoseconds = status.stx_mtime.tv_nsec,
            .changeNanoseconds = status.stx_ctime.tv_nsec,
            .provesWrites = provesWrites(status, asked) ? TRUE : FALSE,
            .wasAlone = FALSE};
}

bool hasSameContent(const FileStamp& stamp, const HostStatus& status)
{
    return std::tuple(stamp.device, stamp.inode, stamp.length, stamp.writeSeconds, stamp.writeNanoseconds) ==
           std::tuple(deviceOf(status), status.stx_ino, status.stx_size, status.stx_mtime.tv_sec,
                      status.stx_mtime.tv_nsec);
}

bool isUnchanged(const FileStamp& stamp, const HostStatus& status)
{
    return hasSameContent(stamp, status) && stamp.changeSeconds == status.stx_ctime.tv_sec &&
           stamp.changeNanoseconds == status.stx_ctime.tv_nsec;
}

}  // namespace platform::file
