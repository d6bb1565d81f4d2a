// registry_file.cpp - see registry_file.h.

#include "registry_file.h"

#include "engine/registry_calls.h"

#include "set/set_entry.h"
#include "set/set_state.h"

#include "ce/module.h"

RegistryFileCall gRegCopyFile;
RegistryFileCall gRegRestoreFile;

namespace {

const WCHAR RegistryFilePath[] = u"TMVRegFile.QBR";  // in the root, since there is no current folder

// The entry's name means nothing: it is that of the item before.
void StoreRegistry(BackupRun& run, HANDLE stream)
{
    StoredItem item = BeginEntry(run, ItemKindRegistry, run.itemName, NoteFailedWrite);
    CopyStream(run, stream, false, NoteFailedWrite);
    CloseHandle(stream);
    EndEntry(run, item);
    DeleteFileW(RegistryFilePath);
    DeleteTemporaryStream(run);
    Log(run, u"INF: End registry backup");
}

}  // namespace

void LookUpRegistryFileCalls()
{
    HMODULE platform = LoadLibraryW(u"\\WINDOWS\\COREDLL.DLL");
    gRegCopyFile = reinterpret_cast<RegistryFileCall>(GetProcAddressW(platform, u"RegCopyFile"));
    gRegRestoreFile = reinterpret_cast<RegistryFileCall>(GetProcAddressW(platform, u"RegRestoreFile"));
    FreeLibrary(platform);  // it stays loaded all the same, and the pointers stay good
}

void BackUpRegistry(BackupRun& run)
{
    if (!gRegistryMarked)
        return;
    Log(run, u"INF: Start registry backup");
    // Without the platform's call, or when it fails, what there is of the file is still tried, and none is told once
    // more. What stood there before is the user's, or an old state: that is neither stored nor deleted.
    const bool stoodThere = GetFileAttributesW(RegistryFilePath) != INVALID_FILE_ATTRIBUTES;
    (void)DeclareTemporaryFile(RegistryFilePath);
    BeginItem(run);
    SetLastError(ERROR_SUCCESS);
    const BOOL copied = gRegCopyFile && gRegCopyFile(RegistryFilePath);
    if (!copied) {
        NoteFailure(run.item, GetLastError());
        Log(run, u"ERR: registry backup");
    }
    if (copied && stoodThere)
        ReportReplacedFile(u"\\TMVRegFile.QBR");
    const bool ours = copied || !stoodThere;
    if (!ours || !PackItem(run, RegistryFilePath))
        Log(run, u"ERR: registry backup");
    HANDLE stream = ours ? OpenTemporaryStream(run) : INVALID_HANDLE_VALUE;
    if (stream != INVALID_HANDLE_VALUE)
        StoreRegistry(run, stream);
    EndItem(run, ItemKindRegistry, u"");
}
