// troubles.cpp - see troubles.h
#include "troubles.h"

#include "ce/error.h"

#include <array>
#include <mutex>
#include <unordered_set>

namespace platform::file {

namespace {

struct Noted {
    std::mutex mutex;
    struct Kind {
        std::unordered_set<std::u16string> paths;
        std::u16string first;
        DWORD error = 0;
    };
    std::array<Kind, 2> kinds;
};

Noted& noted()
{
    static Noted state;
    return state;
}

bool standsInTheWay(Trouble kind, DWORD error)
{
    switch (error) {
    case ERROR_INVALID_NAME:
    case ERROR_FILENAME_EXCED_RANGE:
        return kind == Trouble::Writing;  // something that has no place
    case ERROR_TOO_MANY_OPEN_FILES:
    case ERROR_ACCESS_DENIED:
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_WRITE_PROTECT:
    case ERROR_GEN_FAILURE:
    case ERROR_SHARING_VIOLATION:
    case ERROR_DISK_FULL:
        return true;
    default:
        return false;
    }
}

}  // namespace

void noteTrouble(Trouble kind, std::u16string_view path, DWORD error)
{
    if (!standsInTheWay(kind, error))
        return;
    Noted& all = noted();
    const std::lock_guard lock(all.mutex);
    Noted::Kind& of = all.kinds[static_cast<std::size_t>(kind)];
    if (of.paths.empty()) {
        of.first = path;
        of.error = error;
    }
    of.paths.emplace(path);
}

Troubles troublesSoFar(Trouble kind)
{
    Noted& all = noted();
    const std::lock_guard lock(all.mutex);
    const Noted::Kind& of = all.kinds[static_cast<std::size_t>(kind)];
    return {of.paths.size(), of.first, of.error};
}

}  // namespace platform::file
