// restore_command.cpp - see restore_command.h.

#include "engine/restore_command.h"

#include "choice_list.h"
#include "engine/directory_walker.h"
#include "engine/questions.h"
#include "set/list_file.h"
#include "set/set_state.h"

#include "ce/dialog.h"
#include "ce/file.h"
#include "ce/outcome.h"
#include "ce/text.h"

namespace {

constexpr std::size_t EndingChars = 3;

BOOL CollectSetFile(const WCHAR* name, const WCHAR* folder, DWORD /*attributes*/, UINT_PTR context)
{
    const std::size_t characters = wcslen(name);
    if (characters < EndingChars || lstrcmpW(name + characters - EndingChars, u"QLT") != 0)
        return TRUE;
    WCHAR path[MAX_PATH];
    if (JoinPath(path, folder, name))
        AddChoice(*reinterpret_cast<ChoiceList*>(context), path);
    return TRUE;
}

void RestoreChosen(const WCHAR* listPath, DWORD mode)
{
    if (!LoadList(listPath))
        return;
    WCHAR dataPath[MAX_PATH];
    DataPathOfList(dataPath, listPath);
    RestoreSet(dataPath, listPath, mode);
    RenewLists();
}

DWORD TellNoSetFound()
{
    MessageBoxW(gMainWindow, LoadText(TextNoSetFound, gTextA), nullptr, MB_OK);
    return 0;
}

DWORD ChooseSet(DWORD mode)
{
    ChoiceList sets;
    SearchForChoices(TRUE);
    WalkDirectory(u"\\", nullptr, TRUE, FALSE, CollectSetFile, reinterpret_cast<UINT_PTR>(&sets));
    SearchForChoices(FALSE);
    if (IsEmpty(sets))
        return TellNoSetFound();
    WCHAR listPath[MAX_PATH];
    if (ChooseFromList(gMainWindow, LoadText(TextSelectSet, gTextA), sets.characters.data(), listPath))
        RestoreChosen(listPath, mode);
    return 1;
}

}  // namespace

DWORD RunRestore(DWORD mode)
{
    gSavedRegistryMarked = gRegistryMarked;
    gRegistryMarked = 0;
    const DWORD result = ChooseSet(mode);
    gRegistryMarked = gSavedRegistryMarked;
    return result;
}
