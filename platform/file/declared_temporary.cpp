// declared_temporary.cpp - see declared_temporary.h; setLeftTemporariesAside of name_space.h.
#include "declared_temporary.h"

#include "attributes.h"
#include "file/name_space.h"
#include "folder_reader.h"
#include "host_calls.h"
#include "text/host_name.h"

#include <fcntl.h>

#include <array>

namespace platform::file {

namespace {

constexpr const char* MarkName = "user.quillbox.temporary";

bool isMarkedFile(int folder, const char* name)
{
    std::array<char, 1> value{};
    HostStatus status = {};
    return readExtended(folder, name, MarkName, value) == 1 && readStatus(folder, name, status) == 0 && isFile(status);
}

std::vector<std::string> markedFilesIn(FolderReader& reader)
{
    std::vector<std::string> names;
    while (const auto name = reader.next()) {
        if (isMarkedFile(reader.folder(), name->data()))
            names.emplace_back(*name);
    }
    return names;
}

}  // namespace

bool DeclaredTemporary::take(const HostPlace& place)
{
    if (!place_ || place_->mount != place.mount || place_->path != place.path)
        return false;
    place_.reset();
    return true;
}

void markTemporary(int file)
{
    constexpr std::array Value = {'1'};
    (void)writeExtended(file, MarkName, Value);
}

std::vector<std::u16string> setLeftTemporariesAside(int deviceFolder)
{
    constexpr const char* Aside = "left-behind";
    FolderReader reader(Descriptor(openBelow(rootFolder(), ".", O_RDONLY | O_DIRECTORY)));
    const std::vector<std::string> names = markedFilesIn(reader);
    std::vector<std::u16string> moved;
    if (names.empty())
        return moved;
    (void)makeFolder(deviceFolder, Aside);  // exists already? The opening decides.
    const Descriptor aside(openBelow(deviceFolder, Aside, O_RDONLY | O_DIRECTORY));
    for (const std::string& name : names) {
        if (moveFile(reader.folder(), name.c_str(), aside.get(), name.c_str(), true) == 0)
            moved.push_back(text::toDeviceName(name));
    }
    return moved;
}

}  // namespace platform::file
