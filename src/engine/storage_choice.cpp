// storage_choice.cpp - see storage_choice.h.

#include "storage_choice.h"

#include "choice_list.h"
#include "engine/directory_walker.h"
#include "engine/questions.h"
#include "set_paths.h"

#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/text.h"

namespace {

constexpr DWORD StorageAttributes = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_TEMPORARY;

BOOL CollectStorageFolder(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR context)
{
    if ((attributes & StorageAttributes) != StorageAttributes)
        return TRUE;
    WCHAR path[MAX_PATH];
    // A set's own paths must fit behind it.
    if (JoinPath(path, folder, name) && SetPathsFit(path))
        AddChoice(*reinterpret_cast<ChoiceList*>(context), path);
    return TRUE;
}

}  // namespace

BOOL ChooseStorage(WCHAR* storageRoot)
{
    ChoiceList storages;
    SearchForChoices(TRUE);
    WalkDirectory(u"\\", nullptr, TRUE, TRUE, CollectStorageFolder, reinterpret_cast<UINT_PTR>(&storages));
    SearchForChoices(FALSE);
    AddChoice(storages, LoadText(TextMainDevice, gTextA));
    if (!ChooseFromList(gMainWindow, LoadText(TextSelectStorage, gTextA), storages.characters.data(), storageRoot))
        return FALSE;
    if (lstrcmpW(storageRoot, LoadText(TextMainDevice, gTextA)) == 0)
        storageRoot[0] = 0;
    return TRUE;
}
