// ce/file.h - files and folders of the device's one name space.
//
// Paths: from the root `\`; no drive letters, no current folder, so a path without a leading backslash
// starts at the root. At most 259 characters and the NUL; a longer one fails with 206. Names are
// compared exactly, case included; only search patterns match without case. Cards are folders of the
// root. Links, fifos, sockets and device nodes of the host are not part of the name space: they are not
// listed, not followed and not overwritten, and asking for one by name fails as if it weren't there.
//
// A name that is empty, "." or "..", or that holds one of * ? " < > | fails with 123.
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
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;  // stands alone: no other bit is set
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
inline constexpr DWORD FILE_ATTRIBUTE_COMPRESSED = 0x800;
inline constexpr DWORD FILE_ATTRIBUTE_ROMSTATICREF = 0x1000;
inline constexpr DWORD FILE_ATTRIBUTE_ROMMODULE = 0x2000;

inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

// What a search finds. dwOID tells apart two files that stood at one path one after the other.
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

// Opens or makes a file. `access` is GENERIC_READ and/or GENERIC_WRITE, or 0 for a query that
// conflicts with nothing. The open succeeds only if each handle open on the file allows `access` and
// `share` allows the access of each of them; other processes count as far as the host can tell.
// `security`, `attributes` and `templateFile` are not used: null, 0 and null.
//
// Succeeding, CREATE_ALWAYS and OPEN_ALWAYS set the last error to 183 if the file existed and to 0 if
// not; the other ways set it to 0. CREATE_ALWAYS cuts an existing file to nothing and keeps its place.
//
// INVALID_HANDLE_VALUE on failure:
//   2 no such file; 3 a folder on the way is missing, or no folder; 5 a folder, a read-only file asked
//   for writing, a ROM file asked for writing, a ROM module, no permission; 32 open elsewhere in a way
//   that conflicts; 80 exists already (CREATE_NEW); 87 bad creation; 112 no room for the entry;
//   123 bad name; 206 path too long; 19 a read-only file system; 4 too many open files; 31 the host's
//   input or output failed.
HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, const void* security, DWORD creation, DWORD attributes,
                   HANDLE templateFile);

// Reads up to `bytes` bytes at the handle's place and moves it on. Fewer come only at the end of the
// file; at or behind it the call succeeds with 0. Fails with 5 without read access, 6, 31.
// `bytesRead` may not be null; on failure it is 0 or the bytes that came before the fault.
BOOL ReadFile(HANDLE file, void* buffer, DWORD bytes, DWORD* bytesRead, void* overlapped);

// Writes at the handle's place and moves it on by what was written. A write that succeeds is in the
// file: no later call fails for it, unless the disk itself fails: then the next call on the file tells it with 31, the
// file ends before the bytes that are missing, and each later write fails. Fails with 112 on a full card, 5 without
// write access, 6, 31. `bytesWritten` may not be null; it always tells what is in the file, on failure too: a full card
// still takes the bytes that fit.
BOOL WriteFile(HANDLE file, const void* bytes, DWORD count, DWORD* bytesWritten, void* overlapped);

// Moves the handle's place; `distanceHigh` may be null. With FILE_BEGIN and no high half the distance
// is an unsigned 32-bit place, so offsets of 2 GiB and more work; otherwise it is signed. The result is
// the low half of the new place, which may lie behind the end.
// 0xFFFFFFFF on failure: 6, 87, 131 before the start. (With a place of exactly 0xFFFFFFFF the last
// error is 0.)
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method);

// Makes the handle's place the end of the file, cutting what lies behind it or growing the file. Fails with 5 without
// write access, 6, 31, 112.
BOOL SetEndOfFile(HANDLE file);

// Nonzero when all that was written through this handle is on the disk, and the entry of the file in
// its folder too. Fails with 6, 5 without write access, 31, 112.
BOOL FlushFileBuffers(HANDLE file);

// Hands what was written to the file, and is gathered here, to the host: from then on it survives the end of this
// process, though not a power cut. Costs nothing where nothing is gathered. Fails with the errors of WriteFile; a
// failure means that bytes which were reported as written are missing.
BOOL HandOverFileBuffers(HANDLE file);

// Nonzero when all that this process made, wrote, renamed or deleted on the device, in its own folder and in each card
// and further folder, is on the disk. Covers what was done since the start or the last call; costs nothing for a folder
// where nothing changed. All are tried, whatever fails. On failure the last error is that of the first folder that
// failed (31, 112), and a later call tries that folder again.
BOOL FlushChangedVolumes(void);

// Nonzero on success, 0 with 6 for a handle that is no open file.
BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION* information);

// Says that the next file which the program makes at `path` is temporary: if the process is killed before the file is
// deleted, and it lies in the root, the next opening of the device takes it out of the name space. A file that stands
// there already is left alone, and so is everything on a file system without extended attributes. One declaration is in
// force at a time, until its file is made; null withdraws it. Fails with 3, 123, 206.
BOOL DeclareTemporaryFile(const WCHAR* path);

// Fails with 2, 3, 5 for a folder, a read-only or a ROM file, 19, 32 while open in this process, 123, 206.
BOOL DeleteFileW(const WCHAR* path);

// Fails with 183 if a file or folder of that name exists, 3 if the parent is missing, 5, 19, 112, 123,
// 206. `security` is not used.
BOOL CreateDirectoryW(const WCHAR* path, const void* security);

// Removes an empty folder. Fails with 145 if something is in it, 2, 3 also for a file, 5 for a card and the root, 19,
// 123, 206.
BOOL RemoveDirectoryW(const WCHAR* path);

// The attributes, FILE_ATTRIBUTE_NORMAL if none is set; needs no open and works on files in use. A
// trailing backslash is allowed behind a folder, and "\" is the root. A card's own folder carries
// FILE_ATTRIBUTE_TEMPORARY, what lies below it doesn't.
// 0xFFFFFFFF on failure: 2, 3, 5, 123, 206.
DWORD GetFileAttributesW(const WCHAR* path);

// Begins a search; only the last part of `pattern` may hold * (any run, empty too) and ? (one
// character). "*" and "*.*" match every name; matching is without case. There are no entries "." and
// "..". The order is the host's; callers must not expect any. Files that come or go during the search
// may be seen or not. Names longer than 259 characters are left out.
// INVALID_HANDLE_VALUE on failure: 2 nothing matches, 3 no such folder, 5, 123, 206.
HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* found);

// Nonzero with the next entry; 0 with 18 at the end, 6 for a handle that is no search.
BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* found);

// Nonzero on success, 0 with 6.
BOOL FindClose(HANDLE search);
