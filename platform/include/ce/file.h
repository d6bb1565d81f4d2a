// ce/file.h - files and folders of the device, which are all in one tree.
//
// Paths begin at the root `\`. There are no drive letters and no current folder, so a path without a leading backslash
// also begins at the root. A path has at most 259 characters and the NUL. Names are case-sensitive. Only search
// patterns match without case. The root is a folder of the host (the Linux system). Other folders of the host can be
// mounted in the root. Some of these mounted folders are memory cards. Links, fifos, sockets and device nodes of the
// host are not part of the tree: no search finds them, and no call follows or overwrites them. A call on the path of
// such an entry fails as if the entry didn't exist, or with error 5 if it would make a file or folder there.
//
// A card can be removed while the program runs. From then on, calls on its paths fail with error 21, and so do writes
// and flushes of its open files.
//
// A path fails with error 123 if one of its names is empty, "." or "..", contains a lone surrogate or one of the
// characters / * ? " < > |, or has more than 255 bytes on the host.
//
// Where a comment below mentions an error without a reason, or refers to the top of this file, the reason is:
// - 2: the file or folder doesn't exist.
// - 3: a folder of the path is missing or is a file.
// - 5: the user has no permission.
// - 6: the handle isn't an open file.
// - 19: the file system is read-only.
// - 31: the host's input or output failed.
// - 112: the disk or the card is full.
// - 123: a name is invalid.
// - 206: the path is too long.
#pragma once

#include "ce/error.h"
#include "ce/handle.h"
#include "ce/types.h"

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;

inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;

inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD TRUNCATE_EXISTING = 5;

inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x2;
inline constexpr DWORD FILE_ATTRIBUTE_SYSTEM = 0x4;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
inline constexpr DWORD FILE_ATTRIBUTE_INROM = 0x40;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;  // set only if no other bit is set
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
inline constexpr DWORD FILE_ATTRIBUTE_COMPRESSED = 0x800;
inline constexpr DWORD FILE_ATTRIBUTE_ROMSTATICREF = 0x1000;
inline constexpr DWORD FILE_ATTRIBUTE_ROMMODULE = 0x2000;

inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

// A file or folder that a search has found. If it is deleted and a new one is made at the same path, the new one has a
// different dwOID.
struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwOID;
    WCHAR cFileName[MAX_PATH];
};

struct BY_HANDLE_FILE_INFORMATION {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD dwVolumeSerialNumber;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD nNumberOfLinks;
    DWORD nFileIndexHigh;
    DWORD nFileIndexLow;
    DWORD dwOID;
};

// Opens or makes a file. `access` is GENERIC_READ and/or GENERIC_WRITE, or 0 for a handle that can only ask about the
// file. A handle with access 0 conflicts with no other handle. `share` says which access other handles of the file may
// have. The call succeeds only if the `share` of each handle that is already open on the file permits the new `access`,
// and the new `share` permits the access of each of these handles. Handles of other processes are included as far as
// the host reports them. `security`, `attributes` and `templateFile` are not used: pass null, 0 and null.
//
// On success CREATE_ALWAYS and OPEN_ALWAYS set the last error to 183 if the file existed, otherwise to 0. The other
// values of `creation` set it to 0. CREATE_ALWAYS truncates an existing file to no bytes.
//
// Returns INVALID_HANDLE_VALUE on failure. The last error is one of these:
// - 2: the file doesn't exist.
// - 3: a folder of the path is missing, or is a file.
// - 4: too many files are open.
// - 5: the path names a folder or a ROM module, the call asks to write to a read-only file or a ROM file, or the user
//   has no permission.
// - 8: memory ran out.
// - 19: the file system is read-only.
// - 21: the card was removed.
// - 31: the host's input or output failed.
// - 32: another open handle conflicts with the call.
// - 80: `creation` is CREATE_NEW, and the path exists already.
// - 87: `creation` has an invalid value.
// - 112: there is no space for the directory entry.
// - 123: a name in the path is invalid.
// - 206: the path is too long.
HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, const void* security, DWORD creation, DWORD attributes,
                   HANDLE templateFile);

// Reads up to `bytes` bytes at the handle's position and advances it. Fewer bytes are read only at the end of the file.
// At or after the end the call succeeds with 0 bytes. Fails with error 5 if the handle has no read access, with error 6
// if it isn't an open file, with error 31 if the host's input failed, and with the errors of WriteFile if buffered
// bytes can't be written. `bytesRead` must not be null. On failure `*bytesRead` is the number of bytes that were read
// before the error.
BOOL ReadFile(HANDLE file, void* buffer, DWORD bytes, DWORD* bytesRead, void* overlapped);

// Writes at the handle's position and advances it by the number of bytes written. The process may buffer the bytes in
// memory and pass them to the host later, for example in HandOverFileBuffers or CloseHandle. Reads and searches of this
// process see the buffered bytes. If the process is killed, buffered bytes are lost. Bytes are buffered only if the
// host guarantees disk space for them. If the host can't write them nevertheless, the call that passes them fails. In
// that case the file ends before the missing bytes, and each later write fails until SetEndOfFile cuts the file.
//
// Fails with error 5 if the handle has no write access, and with errors 6, 31 and 112 for the reasons at the top of
// this file. If the disk or the card becomes full, the bytes that fit are written. `bytesWritten` must not be null.
// `*bytesWritten` is the number of bytes that this call has written, even if the call fails.
BOOL WriteFile(HANDLE file, const void* bytes, DWORD count, DWORD* bytesWritten, void* overlapped);

// Moves the handle's position; `distanceHigh` may be null. With FILE_BEGIN and no high half, the distance is an
// unsigned 32-bit offset, so offsets of 2 GiB and more work. In all other cases the distance is signed. Returns the low
// half of the new position, and sets `*distanceHigh` to the high half. The position may be after the end of the file.
//
// Returns 0xFFFFFFFF on failure. If buffered bytes can't be written, the last error is that of WriteFile. Otherwise it
// is 6 or 31 for the reasons at the top of this file, or one of these:
// - 87: `method` is unknown, or the position would be 2^63 or more.
// - 131: the position would be before the start of the file.
// If the call succeeds and 0xFFFFFFFF is the low half of the new position, the last error is 0.
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method);

// Makes the file end at the handle's position: cuts the bytes after it, or extends the file. Fails with error 5 if the
// handle has no write access, and with errors 6, 31 and 112 for the reasons at the top of this file.
BOOL SetEndOfFile(HANDLE file);

// Flushes the file. After a nonzero result the file's directory entry is on the disk, and so are all bytes that this
// process has written to the file through any handle. Fails with error 5 if the handle has no write access, and with
// errors 6, 31 and 112 for the reasons at the top of this file.
BOOL FlushFileBuffers(HANDLE file);

// Passes to the host the bytes that were written to the file and are still buffered in this process. From then on these
// bytes survive the end of the process, but not a power cut. The call costs nothing if no bytes are buffered. Fails
// with the errors of WriteFile. After an error other than 5 and 6, bytes that were reported as written may be missing.
BOOL HandOverFileBuffers(HANDLE file);

// Sets an order of writes: from now on, before this process passes bytes of `file` to the host, it passes all bytes
// that are buffered for `earlier`. So when bytes of `file` are on the host, everything that was written to `earlier`
// before these bytes is there too, even if the process is killed. If the buffered bytes of `earlier` are lost through
// an error, those of `file` are lost too. Writes to `file` then fail with this error, until SetEndOfFile has cut both
// files. The order ends when the last handle of `file` is closed. Only one thread at a time may call WriteAfter.
//
// Nonzero on success. Fails with error 5 if one of the handles has no write access, with error 6 if one isn't an open
// file, and with error 87 if both are handles of the same file, if `file` is temporary, or if `earlier` is itself
// ordered after another file.
BOOL WriteAfter(HANDLE file, HANDLE earlier);

// From MarkUnfinished until MarkFinished, the file is *unfinished*: on the host, one zero byte, the mark, follows its
// last byte. If the process is killed meanwhile, the mark stays. So a reader can recognise the file, if no file of its
// format ends with such a byte. The mark appears with the next bytes that are passed to the host. Each later write at
// the end writes it again in the same call of the host. If the mark can't be written, for example because there is no
// room for it, it is left out without an error. It is also left out after a write of only some bytes, until
// SetEndOfFile. It doesn't count for the capacity of a card, nor for the length of the file. As an exception, the
// length from FindFirstFileW, FindFirstFileExW, FindNextFileW and GetFileStamp (ce/file_stamp.h) can include it.
// MarkFinished removes the mark, and does nothing if the file was never marked or is finished already. If all handles
// are closed before that, the mark stays.
//
// Nonzero on success. Both fail with error 5 if the handle has no write access, and with error 6 if it isn't an open
// file. MarkUnfinished fails with error 87 if the handle has read access or shares the file, or if the file is
// temporary. MarkFinished also fails with the errors of WriteFile and SetEndOfFile. The file is then still unfinished.
BOOL MarkUnfinished(HANDLE file);
BOOL MarkFinished(HANDLE file);

// Flushes everything that this process has made, written, renamed or deleted since its start or the last call, in the
// root's own folder and in all mounted folders. Nonzero when all of this is on the disk. A folder without changes costs
// nothing. If a folder fails, the other folders are still flushed. The last error is that of the first folder that
// failed, such as 31, 112, or 21 for a card that was removed. A later call tries the failed folders again, but not a
// card that was removed.
BOOL FlushChangedVolumes(void);

// Asks the host to drop the file's bytes from its cache, so that later reads come from the disk. Bytes that aren't on
// the disk yet stay in the cache. Nonzero on success. Fails with error 6 if the handle isn't an open file, and with
// error 31 or another error if the host fails.
BOOL DropFromCache(HANDLE file);

// Nonzero on success. Fails with error 87 if `information` is null, with errors 6 and 31 for the reasons at the top of
// this file, and with the errors of WriteFile if buffered bytes can't be written.
BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION* information);

// Examines the mounted folder that contains `path`, or the root's own folder if no mounted folder contains `path`.
// Sets `*available` and `*totalFree` to the number of bytes that can still be written there, and `*total` to the total
// size. The capacity of a card limits these numbers. Each pointer may be null. Nothing need exist at `path`. Fails with
// errors 5, 31, 123 and 206 for the reasons at the top of this file.
BOOL GetDiskFreeSpaceExW(const WCHAR* path, std::uint64_t* available, std::uint64_t* total, std::uint64_t* totalFree);

// Declares that the files which the program makes at `path` are temporary, until WithdrawTemporaryFile. Such a file
// uses up the capacity of its card, and all calls treat it like any other file. But the file is put on the host only
// when a call needs it there. Until then it costs little, other programs don't see it, and nothing is left of it if the
// process is killed.
//
// The following calls first put the temporary file on the host: a search of its folder, FlushFileBuffers,
// HandOverFileBuffers, SetEndOfFile, GetFileInformationByHandle, FlushChangedVolumes, and every call that gets its path
// or a path below it. But the following calls with its path don't put it on the host: the call that makes the file, a
// call that opens it only for reading, DeleteFileW, IsFileUnchanged, GetDiskFreeSpaceExW and DeclareTemporaryFile. A
// call that puts the file on the host can also fail with the errors of making a file. A process can be killed while one
// of its temporary files is on the host. If the file is directly in the root, the next opening of the device moves it
// out of the device's tree. In any other folder, and on a file system without extended attributes, the file stays where
// it is.
//
// If a file exists at the path when the path is declared, the declaration takes effect when DeleteFileW deletes that
// file. If another program makes a file at the path later, that file isn't touched. As long as there is a temporary
// file at the path, this process doesn't see the other program's file. Fails with error 5 for the root or a mounted
// folder, and with errors 123 and 206 for the reasons at the top of this file.
BOOL DeclareTemporaryFile(const WCHAR* path);

// Ends the effect of DeclareTemporaryFile for the path. If there is a temporary file at the path, this call puts it on
// the host, and it becomes an ordinary file. This step can fail with an error of CreateFileW or WriteFile, such as
// error 80 if another program has made a file at the path. After a failure the declaration remains in effect.
BOOL WithdrawTemporaryFile(const WCHAR* path);

// Deletes a file. Fails with errors 2, 3, 19, 31, 123 and 206 for the reasons at the top of this file, and with these:
// - 5: the path is that of a folder, a read-only file or a ROM file, or the user has no permission.
// - 32: this process has the file open.
BOOL DeleteFileW(const WCHAR* path);

// Makes a folder. `security` is not used. Fails with error 183 if a file or folder exists at the path, and with errors
// 3, 5, 19, 31, 112, 123 and 206 for the reasons at the top of this file.
BOOL CreateDirectoryW(const WCHAR* path, const void* security);

// Removes an empty folder. Fails with errors 2, 19, 31, 123 and 206 for the reasons at the top of this file, and with
// these:
// - 3: the path is that of a file, or a folder of the path is missing or is a file.
// - 5: the path is that of the root or a mounted folder, or the user has no permission.
// - 145: the folder isn't empty.
BOOL RemoveDirectoryW(const WCHAR* path);

// Returns the attributes, or FILE_ATTRIBUTE_NORMAL if none is set. Also works on files that are in use. The path of a
// folder may have a trailing backslash, and "\" is the root. The folder of a card has FILE_ATTRIBUTE_TEMPORARY, but the
// entries below it don't have it. Returns 0xFFFFFFFF on failure. The last error is 2, 3, 5, 31, 123 or 206 for the
// reasons at the top of this file.
DWORD GetFileAttributesW(const WCHAR* path);

// Nonzero if it is certain that nothing exists at the path, so that GetFileAttributesW would fail with error 2 or 3.
// Makes only one call on the host. GetFileAttributesW makes several, because it distinguishes the two errors. Doesn't
// set the last error.
BOOL IsNothingAt(const WCHAR* path);

// Begins a search. Only the last part of `pattern` may contain * (any number of characters, also none) and ? (one
// character). "*" and "*.*" match every name. Names are matched without case. There are no entries "." and "..". The
// entries come in the host's order, so callers must not rely on an order. A file that is made or deleted during the
// search may or may not be found. Names longer than 259 characters are left out. Returns INVALID_HANDLE_VALUE on
// failure. The last error is 2 if nothing matches, or 3, 5, 31, 123 or 206 for the reasons at the top of this file.
HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* found);

// Like FindFirstFileW. `level` must be FindExInfoStandard, `found` a WIN32_FIND_DATAW, `filter` null and `flags` 0.
// Anything else fails with error 87. With FindExSearchLimitToDirectories the search leaves out files. This saves a call
// on the host for each file. But a caller must expect files, because a real device may return them.
enum FINDEX_INFO_LEVELS { FindExInfoStandard };
enum FINDEX_SEARCH_OPS { FindExSearchNameMatch, FindExSearchLimitToDirectories };
HANDLE FindFirstFileExW(const WCHAR* pattern, FINDEX_INFO_LEVELS level, void* found, FINDEX_SEARCH_OPS operation,
                        const void* filter, DWORD flags);

// Gets the next entry. Nonzero on success. Fails with error 18 after the last entry, with error 6 if `search` isn't a
// search's handle, with error 87 if `found` is null, and with error 31 if the host's input failed.
BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* found);

// Nonzero on success. Fails with error 6 if `search` isn't a search's handle.
BOOL FindClose(HANDLE search);
