#include "options_store.h"

#include "ce/registry.h"

#include <cstring>

Options gOptions;

namespace {

const WCHAR OptionsKey[] = u"software\\KORV\\QUILLBOX";
const WCHAR OptionValue[] = u"Option";
const WCHAR ExtValue[] = u"Ext";

// The size of the value with the extensions. It is half of the size of gOptions.extensions. LoadOptions takes the
// extensions only from this value, so the rest of a longer list is lost at the next start.
constexpr DWORD ExtBytes = 260;

HKEY OpenOptionsKey()
{
    HKEY key = nullptr;
    const LONG error =
        RegCreateKeyExW(HKEY_CURRENT_USER, OptionsKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    return error == 0 ? key : nullptr;
}

}  // namespace

void SetDefaultOptions()
{
    gOptions = {};
    gOptions.maxBackupSizeMb = 4;
    gOptions.restoreMode = RestoreModeAsk;
    gOptions.showRomFiles = 1;
}

DWORD LoadOptions()
{
    HKEY key = OpenOptionsKey();
    if (!key)
        return 0;

    // A value that is missing or longer than `bytes` isn't read. If the value of the extensions isn't read, their list
    // is empty.
    DWORD bytes = sizeof gOptions;
    (void)RegQueryValueExW(key, OptionValue, nullptr, nullptr, reinterpret_cast<BYTE*>(&gOptions), &bytes);
    std::memset(gOptions.extensions, 0, sizeof gOptions.extensions);
    bytes = ExtBytes;
    (void)RegQueryValueExW(key, ExtValue, nullptr, nullptr, reinterpret_cast<BYTE*>(gOptions.extensions), &bytes);
    RegCloseKey(key);
    return 1;
}

DWORD SaveOptions()
{
    HKEY key = OpenOptionsKey();
    if (!key)
        return 0;

    (void)RegSetValueExW(key, OptionValue, 0, REG_BINARY, reinterpret_cast<const BYTE*>(&gOptions), sizeof gOptions);
    (void)RegSetValueExW(key, ExtValue, 0, REG_BINARY, reinterpret_cast<const BYTE*>(gOptions.extensions), ExtBytes);
    RegCloseKey(key);
    return 1;
}
