#include "device/changing_copy.h"

#include <system_error>

namespace platform::device {

namespace fs = std::filesystem;

fs::path changingCopyOf(const fs::path& database)
{
    return database.string() + ".changing";
}

bool removeChangingCopyOf(const fs::path& database)
{
    bool removed = true;
    for (const char* part : {"", "-wal", "-shm", "-journal"}) {
        std::error_code error;
        fs::remove(changingCopyOf(database).string() + part, error);
        removed = removed && !error;
    }
    return removed;
}

}  // namespace platform::device
