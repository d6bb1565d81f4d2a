// Implements ce/module.h. The only library that a program can load is the platform itself, \WINDOWS\COREDLL.DLL.
#include "ce/module.h"

#include "kernel/entry_points.h"

#include "ce/error.h"

#include <map>
#include <mutex>
#include <string_view>
#include <utility>

namespace platform::kernel {

namespace {

constexpr std::u16string_view LibraryName = u"\\WINDOWS\\COREDLL.DLL";

struct EntryPoints {
    std::mutex mutex;
    std::map<std::u16string, FARPROC, std::less<>> byName;
};

EntryPoints& entryPoints()
{
    static EntryPoints only;
    return only;
}

// The library is never unloaded, so the address of a static variable can be its handle.
HMODULE theModule()
{
    static constexpr char only = 0;
    return reinterpret_cast<HMODULE>(const_cast<char*>(&only));
}

// The library's name is ASCII, so folding ASCII is enough.
constexpr char16_t upperAscii(char16_t character)
{
    return character >= u'a' && character <= u'z' ? static_cast<char16_t>(character - 32) : character;
}

bool isLibraryName(std::u16string_view name)
{
    if (name.size() != LibraryName.size())
        return false;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (upperAscii(name[i]) != LibraryName[i])
            return false;
    }
    return true;
}

}  // namespace

void registerEntryPoint(std::u16string name, FARPROC entryPoint)
{
    EntryPoints& known = entryPoints();
    const std::lock_guard lock(known.mutex);
    known.byName.insert_or_assign(std::move(name), entryPoint);
}

}  // namespace platform::kernel

using namespace platform::kernel;

HMODULE LoadLibraryW(const WCHAR* name)
{
    if (name && isLibraryName(name))
        return theModule();
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

FARPROC GetProcAddressW(HMODULE module, const WCHAR* name)
{
    if (module != theModule()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    EntryPoints& known = entryPoints();
    const std::lock_guard lock(known.mutex);
    const auto found = name ? known.byName.find(std::u16string_view(name)) : known.byName.end();
    if (found == known.byName.end()) {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    return found->second;
}

BOOL FreeLibrary(HMODULE module)
{
    if (module == theModule())
        return TRUE;
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}
