#include "ce/command.h"

#include "engine/options.h"
#include "engine/questions.h"
#include "engine/registry_calls.h"
#include "set/set_state.h"

// All fields of gOptions become 0. The settings that the window has saved aren't loaded, because the command's request
// contains the settings of its run.
void BeginCommand(HINSTANCE instance)
{
    gInstance = instance;
    gOptions = {};
    LookUpRegistryFileCalls();
    RenewLists();
    gRegistryMarked = 0;
    gRunQuestions = {.mayReplaceSet = [](const WCHAR* /*listPath*/) { return false; },
                     .mayReplaceFile = [](const WCHAR* /*path*/) { return false; },
                     .mayReplaceDatabase = [](const WCHAR* /*name*/) { return false; },
                     .showRegistryRestored = [] {},
                     .openProgress = [](const WCHAR*, const WCHAR*, DWORD, DWORD) { return HWND{nullptr}; }};
}
