// declared_temporary.cpp - see declared_temporary.h; removeLeftTemporaries of name_space.h.
#include "declared_temporary.h"

#include "attributes.h"
#include "folder_reader.h"
#include "host_calls.h"
#include "name_space.h"

#include <fcntl.h>

#include <array>
#include <string>
#include <vector>

namespace platform::file {

namespace {

constexpr const char* MarkName = "user.quillbox.temporary";

bool isMarkedFile(int folder, const char* name)
{
    std::array<char, 1> value{};
    HostStatus status = {};
    return readExtended(folder, name, MarkName, value) == 1 && readStatus(folder, name, status) == 0 && isFile(status);
}

}  // namespace

void markTemporary(int file)
{
    constexpr std::array Value = {'1'};
    (void)writeExtended(file, MarkName, Value);
}

void removeLeftTemporaries()
{
    FolderReader reader(Descriptor(openBelow(rootFolder(), ".", O_RDONLY | O_DIRECTORY)));
    std::vector<std::string> left;
    while (const auto name = reader.next()) {
        if (isMarkedFile(reader.folder(), name->data()))
            left.emplace_back(*name);
    }
    for (const std::string& name : left)
        (void)removeFile(reader.folder(), name.c_str());
}

}  // namespace platform::file
