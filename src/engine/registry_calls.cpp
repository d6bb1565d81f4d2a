#include "engine/registry_calls.h"

#include "ce/module.h"

RegistryFileCall gRegCopyFile;
RegistryFileCall gRegRestoreFile;

void LookUpRegistryFileCalls()
{
    HMODULE platform = LoadLibraryW(u"\\WINDOWS\\COREDLL.DLL");
    gRegCopyFile = reinterpret_cast<RegistryFileCall>(GetProcAddressW(platform, u"RegCopyFile"));
    gRegRestoreFile = reinterpret_cast<RegistryFileCall>(GetProcAddressW(platform, u"RegRestoreFile"));
    FreeLibrary(platform);  // the program keeps the library loaded, so the pointers stay valid
}
