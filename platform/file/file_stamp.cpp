#include "file_stamp.h"

#include "attributes.h"

#include <algorithm>
#include <tuple>

namespace platform::file {

namespace {

constexpr std::int64_t Second = 1'000'000'000;

// The host's clock for file times advances in steps of up to 10 ms, and exFAT stores times in steps of 10 ms. FineStep
// is longer than these steps, to be safe.
constexpr std::int64_t FineStep = 50'000'000;

// FAT stores times in steps of two seconds, and some other file systems store whole seconds. CoarseStep is longer than
// these steps, to be safe.
constexpr std::int64_t CoarseStep = 4 * Second;

// Returns the time from `from` to `to`, limited to about 11 days in both directions so that it can't overflow. The
// caller compares the result only with FineStep or CoarseStep.
std::int64_t nanosecondsBetween(const statx_timestamp& from, const timespec& to)
{
    const std::int64_t seconds = std::clamp<std::int64_t>(to.tv_sec - from.tv_sec, -1'000'000, 1'000'000);
    return seconds * Second + to.tv_nsec - from.tv_nsec;
}

// Whether it is certain that each later write changes the stamp. Each write sets the file's write time from a clock
// that advances in steps. If two writes fall into one step, the second leaves the write time unchanged. So the write
// time must be older than one step when the stamp is taken. A program can also set the write time back. But this
// changes the change time, and the stamp contains both of them. If the change time has no fraction of a second, the
// file system may store times in coarse steps. Then both times must be older than a coarse step.
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
