#include "declared_temporary.h"

#include "attributes.h"
#include "host_calls.h"

#include <array>

namespace platform::file {

namespace {

constexpr const char* MarkName = "user.quillbox.temporary";

}  // namespace

bool DeclaredTemporary::take(const HostPath& path)
{
    if (!path_ || !path_->isSame(path))
        return false;
    path_.reset();
    return true;
}

void markTemporary(int file)
{
    constexpr std::array Value = {'1'};
    (void)writeExtended(file, MarkName, Value);
}

bool isMarkedTemporary(int folder, const char* name)
{
    std::array<char, 1> value{};
    HostStatus status = {};
    return readExtended(folder, name, MarkName, value) == 1 && readStatus(folder, name, status) == 0 && isFile(status);
}

}  // namespace platform::file
