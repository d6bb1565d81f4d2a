#include "file_stamp.h"

#include "attributes.h"

#include <algorithm>
#include <tuple>

namespace platform::file {

namespace {

constexpr std::int64_t Second = 1'000'000'000;

// The host's clock for file times advances in steps of up to 10 ms, and exFAT stores times in such steps.
constexpr std::int64_t FineStep = 50'000'000;

// FAT stores times in steps of two seconds, some file systems in whole seconds.
constexpr std::int64_t CoarseStep = 4 * Second;

// The result is limited to some days, which is enough to compare it with a step.
std::int64_t nanosecondsBetween(const statx_timestamp& from, const timespec& to)
{
    const std::int64_t seconds = std::clamp<std::int64_t>(to.tv_sec - from.tv_sec, -1'000'000, 1'000'000);
    return seconds * Second + to.tv_nsec - from.tv_nsec;
}

// Whether any later write changes the stamp. A write sets the time of writing to the present, so the time stays the
// same only if it is less than a step of the clock ago. A program that sets it back afterwards changes the time of
// change, which the stamp has, too. If that time is coarse, it must be as long ago, too.
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
