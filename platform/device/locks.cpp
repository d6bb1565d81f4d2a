#include "locks.h"

#include "refusal.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace platform::device {

namespace {

// Returns " (process 1234)" for the process that has locked the file. Returns an empty text if /proc/locks doesn't name
// the process. A line of /proc/locks reads "1: FLOCK  ADVISORY  WRITE 1234 fd:01:5678 0 EOF". In this line, 1234 is the
// process, fd and 01 are the major and the minor number of st_dev, and 5678 is the inode.
std::string processWithLock(const Descriptor& locked)
{
    struct stat status {};
    if (::fstat(locked.get(), &status) != 0)
        return {};
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::ranges::replace(line, ':', ' ');
        std::istringstream words(line);
        std::string number, kind, how, what;
        long process = 0;
        unsigned major = 0, minor = 0;
        ino_t inode = 0;
        words >> number >> kind >> how >> what >> process >> std::hex >> major >> minor >> std::dec >> inode;
        if (words && kind == "FLOCK" && process > 0 && inode == status.st_ino && makedev(major, minor) == status.st_dev)
            return " (process " + std::to_string(process) + ")";
    }
    return {};
}

}  // namespace

Descriptor lockDevice(const std::filesystem::path& folder)
{
    Descriptor lock(::open((folder / "device.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (!lock)
        refuse("The device " + quoted(folder) + " can't be written to", errno);
    if (::flock(lock.get(), LOCK_EX | LOCK_NB) == 0)
        return lock;
    if (errno == EWOULDBLOCK)
        throw Refusal("The device " + quoted(folder) + " is open in another Quillbox" + processWithLock(lock) + ".",
                      true);
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
        (void)!::write(deviceLock.get(), "database\n", 9);  // if this fails, only a later warning is missing
}

bool tryLockCard(const Descriptor& opened)
{
    return ::flock(opened.get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void lockCard(const Descriptor& opened, const std::filesystem::path& folder)
{
    if (!tryLockCard(opened))
        throw Refusal("The card " + quoted(folder) + " is in use by another Quillbox device" + processWithLock(opened) +
                          ".",
                      true);
}

}  // namespace platform::device
