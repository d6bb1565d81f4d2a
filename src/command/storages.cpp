#include "storages.h"

#include "ce/command.h"

#include "engine/directory_walker.h"
#include "engine/set_paths.h"

#include "ce/file.h"

namespace {

constexpr DWORD CardAttributes = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY;

BOOL CollectCard(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR context)
{
    if ((attributes & CardAttributes) == CardAttributes)
        reinterpret_cast<std::vector<std::u16string>*>(context)->push_back(std::u16string(folder) + name);
    return TRUE;
}

}  // namespace

std::vector<std::u16string> Cards()
{
    std::vector<std::u16string> cards;
    WalkDirectory(u"\\", nullptr, FALSE, TRUE, CollectCard, reinterpret_cast<UINT_PTR>(&cards));
    return cards;
}

bool IsStorage(const std::u16string& path)
{
    if (path.empty())
        return true;
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & CardAttributes) == CardAttributes &&
           SetPathsFit(path.c_str());
}
