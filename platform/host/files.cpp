#include "host/files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <random>

namespace platform::host {

namespace {

template <class Call>
int unlessInterrupted(const Call& call)
{
    while (call() != 0) {
        if (errno != EINTR)
            return errno;
    }
    return 0;
}

}  // namespace

int setRights(int file, const Rights& rights)
{
    constexpr auto SameOwner = static_cast<uid_t>(-1);
    const bool hasGroup =
        ::fchown(file, rights.owner, rights.group) == 0 || ::fchown(file, SameOwner, rights.group) == 0;
    const mode_t kept = hasGroup ? S_IRWXU | S_IRWXG | S_IRWXO : S_IRWXU | S_IRWXO;
    return unlessInterrupted([&] { return ::fchmod(file, rights.mode & kept); });
}

int flush(const std::filesystem::path& file)
{
    const Descriptor opened(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    return opened ? unlessInterrupted([&] { return ::fsync(opened.get()); }) : errno;
}

int flushFolder(const std::filesystem::path& folder)
{
    return flush(folder / ".");
}

std::string unguessableName()
{
    // getentropy() is tried first, because opening std::random_device takes 16 microseconds.
    std::array<unsigned, 2> random{};
    if (::getentropy(random.data(), sizeof random) != 0) {
        std::random_device device;
        random = {device(), device()};
    }
    std::array<char, 17> digits{};
    (void)std::snprintf(digits.data(), digits.size(), "%08x%08x", random[0], random[1]);
    return digits.data();
}

}  // namespace platform::host
