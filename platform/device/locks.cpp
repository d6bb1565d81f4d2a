#include "locks.h"

#include "refusal.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::device {

Descriptor lockDevice(const std::filesystem::path& folder)
{
    Descriptor lock(::open((folder / "device.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (!lock)
        refuse("The device " + quoted(folder) + " can't be written to", errno);
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) == 0)
        return lock;
    if (errno == EWOULDBLOCK)
        throw Refusal("The device " + quoted(folder) + " is open in another Quillbox.", true);
    refuse("The device " + quoted(folder) + " can't be locked", errno);
}

bool hadDatabase(const Descriptor& deviceLock)
{
    struct stat status = {};
    return ::fstat(deviceLock.get(), &status) == 0 && status.st_size > 0;
}

void noteDatabase(const Descriptor& deviceLock)
{
    if (!hadDatabase(deviceLock))
        (void)!::write(deviceLock.get(), "database\n", 9);  // after a failure only a warning is missing later
}

bool tryLockCard(const Descriptor& opened)
{
    return ::flock(opened.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void lockCard(const Descriptor& opened, const std::filesystem::path& folder)
{
    if (!tryLockCard(opened))
        throw Refusal("The card " + quoted(folder) + " is in use by another Quillbox device.", true);
}

}  // namespace platform::device
