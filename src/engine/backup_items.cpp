#include "backup_items.h"

#include "engine/options.h"
#include "engine/questions.h"
#include "engine/registry_calls.h"
#include "run_progress.h"
#include "set/database_image.h"
#include "set/set_state.h"
#include "thread_ahead.h"

#include "ce/text.h"

namespace {

// Storing files. Each file is packed directly from the device, without an intermediate file.

void StoreFile(BackupRun& run, const WCHAR* name, HANDLE stream)
{
    BackupEntry entry = StoreStream(run, ItemKindFile, name, stream, true, LogFailedWrite);
    DeleteTemporaryStream(run);
    Log(run, u"INF: End file backup%s", name);
    EndEntry(run, entry);
}

void BackUpFile(BackupRun& run, const WCHAR* name, SmallStream* ahead)
{
    ShowItem(run.progress, KindOf(ItemKindFile), name);
    Log(run, u"INF: Start file backup: %s", name);
    BeginItem(run);
    if (!PackItem(run, name, ahead))
        Log(run, u"ERR: File access file: %s", name);
    HANDLE stream = OpenTemporaryStream(run);
    if (stream != INVALID_HANDLE_VALUE)
        StoreFile(run, name, stream);
    if (EndItem(run, ItemKindFile, name) && gOptions.deleteBackedUp)
        DeleteWhenOnDisk(run.deletion, name, run.packed.source, run.listFile, run.dataFile);
    StepRunProgress(run.progress);
}

// The file's stream may have been packed and kept while the files were listed (kept_streams.h). If so, and if the file
// hasn't changed since, sets item.stream to the kept stream and returns true.
bool UseKeptStream(AheadItem& item)
{
    const KeptStream& kept = item.offer.kept;
    if (!kept.bytes || !IsFileUnchanged(item.path, &kept.source))
        return false;
    item.stream = {.state = SmallStreamState::Packed,
                   .error = ERROR_SUCCESS,
                   .bytes = kept.count,
                   .readBytes = kept.readBytes,
                   .digest = kept.digest,
                   .kept = kept.bytes,
                   .pieces = {}};
    return true;
}

void PackAhead(AheadItem& item, SmallStreamMemory& memory)
{
    if (!UseKeptStream(item))
        PackSmallStream(item.path, item.stream, memory);
}

void BackUpNext(BackupRun& run)
{
    AheadItem& next = TakeAhead();
    if (StopsBefore(KindOf(ItemKindFile), next.path)) {
        DropSmallStream(next.stream);
        return;
    }
    CopyText(run.itemName, next.path);
    if (!next.finished)
        UseKeptStream(next);
    BackUpFile(run, next.path, &next.stream);
}

// A source that is to be deleted isn't packed in advance. Its deletion needs run.packed.source, a stamp
// (ce/file_stamp.h) that was taken before the source was read. Only CompressFile sets this stamp. WriteSmallStream,
// which writes a stream that was packed in advance, doesn't.
void BackUpFiles(BackupRun& run)
{
    const bool packsAhead = !gOptions.deleteBackedUp && CodecWorks();
    StartAhead(packsAhead ? PackAhead : nullptr, IsRoomForSmallStream);
    DWORD number = 0;
    ForEachEntry(gFileList, [&](const EntryBuffer& entry) {
        if (IsAheadFull())
            BackUpNext(run);
        OfferAhead(entry.name, {.kept = packsAhead ? FindKeptStream(number) : KeptStream{}});
        number++;
    });
    while (!IsAheadEmpty())
        BackUpNext(run);
    StopAhead();
    ForgetKeptStreams();
    SettleWaitingEntries(run);
    DeleteCollected(run.deletion, run.listFile, run.dataFile);
    SetCursor(nullptr);
    CloseRunProgress(run.progress);
}

// Storing databases. Each database is written to an image file in the root. The image file is packed and then deleted.

// Writes the database to an image file. Returns whether this call created the image file. If it didn't, a file that
// exists at `path` belongs to the user, and the caller must neither store nor delete it.
BOOL MakeImage(BackupRun& run, const WCHAR* name, const WCHAR* path)
{
    const TemporaryFile image = ExpectTemporaryFile(path);
    BOOL made = FALSE;
    SetLastError(ERROR_SUCCESS);
    if (!DumpDatabase(name, &made)) {
        NoteFailure(run.item, GetLastError());
        Log(run, u"ERR: Database backup: %s", name);
    }
    (void)IsOwnFile(image, made != FALSE);
    return made;
}

// Packs the image of a database and opens the packed stream. If DumpDatabase fails but makes an image, this image is
// stored too, with the records that could be read. If there is no image or it can't be packed, the log gets a line,
// even if MakeImage has written the same line before.
HANDLE PackDatabase(BackupRun& run, const WCHAR* name, const WCHAR* imagePath)
{
    const BOOL made = MakeImage(run, name, imagePath);
    if (!made)
        NoteFailure(run.item, GetLastError());
    if (!made || !PackItem(run, imagePath))
        Log(run, u"ERR: Database backup: %s", name);
    return made ? OpenTemporaryStream(run) : INVALID_HANDLE_VALUE;
}

void BackUpDatabase(BackupRun& run, const WCHAR* name)
{
    ShowItem(run.progress, KindOf(ItemKindDatabase), name);
    Log(run, u"INF: Start Database backup: %s", name);
    BeginItem(run);
    WCHAR imagePath[MAX_PATH];
    wsprintfW(imagePath, u"\\%s.CDB", name);
    HANDLE stream = PackDatabase(run, name, imagePath);
    if (stream != INVALID_HANDLE_VALUE) {
        BackupEntry entry = StoreStream(run, ItemKindDatabase, name, stream, true, NoteFailedWrite);
        EndEntry(run, entry);
        DeleteFileW(imagePath);
        DeleteTemporaryStream(run);
        Log(run, u"INF: End Database backup: %s", name);
    }
    (void)WithdrawTemporaryFile(imagePath);
    EndItem(run, ItemKindDatabase, name);
    StepRunProgress(run.progress);
}

void BackUpDatabases(BackupRun& run)
{
    run.progress = OpenRunProgress(TextDatabases, CountOf(gDatabaseList));
    SetWaitCursor();
    ForEachEntry(gDatabaseList, [&](const EntryBuffer& entry) {
        if (StopsBefore(KindOf(ItemKindDatabase), entry.name))
            return;
        CopyText(run.itemName, entry.name);
        BackUpDatabase(run, entry.name);
    });
}

// Storing the registry. The platform writes it to one file. The file is packed and then deleted.

const WCHAR DumpedRegistryPath[] = u"\\TMVRegFile.QBR";
// The platform has no current folder, and each path begins at the root. So the path without its backslash means the
// same file.
const WCHAR* const RegistryName = DumpedRegistryPath + 1;

// Lets the platform write the registry to a file. Returns whether the caller may store and delete the file at
// DumpedRegistryPath. If the platform succeeded, the result is true. If it failed, the result is true only if no file
// existed at the path before the call, because the platform then made any file that is there now. A file that existed
// before can be the user's, or an old registry.
bool CopyRegistry(BackupRun& run)
{
    const TemporaryFile file = ExpectTemporaryFile(DumpedRegistryPath);
    SetLastError(ERROR_SUCCESS);
    const bool copied = gRegCopyFile && gRegCopyFile(RegistryName);
    if (!copied) {
        NoteFailure(run.item, GetLastError());
        Log(run, u"ERR: registry backup");
    }
    return IsOwnFile(file, copied);
}

// The registry has no name. So its entry gets run.itemName, the name of the last file or database that was begun.
// Programs that read the list ignore this name.
void StoreRegistry(BackupRun& run, HANDLE stream)
{
    BackupEntry entry = StoreStream(run, ItemKindRegistry, run.itemName, stream, false, NoteFailedWrite);
    EndEntry(run, entry);
    DeleteFileW(RegistryName);
    DeleteTemporaryStream(run);
    Log(run, u"INF: End registry backup");
}

void BackUpRegistry(BackupRun& run)
{
    if (!gRegistryMarked || StopsBefore(KindOf(ItemKindRegistry), u""))
        return;
    Log(run, u"INF: Start registry backup");
    BeginItem(run);
    const bool own = CopyRegistry(run);
    if (!own || !PackItem(run, RegistryName))
        Log(run, u"ERR: registry backup");
    HANDLE stream = own ? OpenTemporaryStream(run) : INVALID_HANDLE_VALUE;
    if (stream != INVALID_HANDLE_VALUE)
        StoreRegistry(run, stream);
    (void)WithdrawTemporaryFile(DumpedRegistryPath);
    EndItem(run, ItemKindRegistry, u"");
}

}  // namespace

void BackUpItems(BackupRun& run)
{
    BackUpFiles(run);
    BackUpDatabases(run);
    BackUpRegistry(run);
}
