// The linker takes these calls instead of those of the C library.
#include "failing_flush.h"

#include <cerrno>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

bool failing = false;

int flush(long call, int file)
{
    if (!failing)
        return static_cast<int>(syscall(call, file));
    errno = EIO;
    return -1;
}

}  // namespace

void failFlushes(bool fail)
{
    failing = fail;
}

extern "C" int fsync(int file)
{
    return flush(SYS_fsync, file);
}

extern "C" int fdatasync(int file)
{
    return flush(SYS_fdatasync, file);
}
