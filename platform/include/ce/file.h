// ce/file.h - files and folders of the device's one name space.
//
// Paths: from the root `\`; no drive letters, no current folder, so a path without a leading backslash starts at the
// root. At most 259 characters and the NUL; a longer one fails with 206. Names are compared exactly, case included;
// only search patterns match without case. Cards are folders of the root. Links, fifos, sockets and device nodes of the
// host are not part of the name space: they are not listed, not followed and not overwritten, and a call that names one
// fails as if it didn't exist.
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
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;  // set only if no other bit is
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
inline constexpr DWORD FILE_ATTRIBUTE_COMPRESSED = 0x800;
inline constexpr DWORD FILE_ATTRIBUTE_ROMSTATICREF = 0x1000;
inline constexpr DWORD FILE_ATTRIBUTE_ROMMODULE = 0x2000;

inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

// What a search finds. dwOID differs between two files that had the same path one after the other.
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

// Opens or makes a file. `access` is GENERIC_READ and/or GENERIC_WRITE, or 0 for a query that conflicts with nothing.
// The open succeeds only if each handle open on the file allows `access` and `share` allows the access of each of them;
// handles of other processes count as far as the host reports them. `security`, `attributes` and `templateFile` are not
// used: null, 0 and null.
//
// On success CREATE_ALWAYS and OPEN_ALWAYS set the last error to 183 if the file existed, otherwise to 0. The other
// ways set it to 0. CREATE_ALWAYS truncates an existing file to no bytes.
//
// INVALID_HANDLE_VALUE on failure: 2 no such file; 3 a folder of the path is missing, or is a file; 5 a folder, a
//   read-only file asked for writing, a ROM file asked for writing, a ROM module, no permission; 32 open elsewhere in a
//   way that conflicts; 80 exists already (CREATE_NEW); 87 bad creation; 112 no room for the entry; 123 bad name; 206
//   path too long; 19 a read-only file system; 4 too many open files; 31 the host's input or output failed.
HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, const void* security, DWORD creation, DWORD attributes,
                   HANDLE templateFile);

// Reads up to `bytes` bytes at the handle's position and advances it. Fewer bytes are read only at the end of the file;
// at or after the end the call succeeds with 0 bytes. Fails with 5 without read access, 6, 31. `bytesRead` may not be
// null. On failure it is the number of bytes that were read before the fault.
BOOL ReadFile(HANDLE file, void* buffer, DWORD bytes, DWORD* bytesRead, void* overlapped);

// Writes at the handle's position and advances it by the bytes written. After success the bytes are in the file, and no
// later call fails because of them, unless the disk itself fails. In that case the next call on the file fails with 31,
// the file ends before the missing bytes, and each later write fails. Fails with 112 on a full card, 5 without write
// access, 6, 31. `bytesWritten` may not be null. It is the number of bytes that are in the file, also on failure: a
// full card still takes the bytes that fit.
BOOL WriteFile(HANDLE file, const void* bytes, DWORD count, DWORD* bytesWritten, void* overlapped);

// Moves the handle's position; `distanceHigh` may be null. With FILE_BEGIN and no high half the distance is an unsigned
// 32-bit offset, so offsets of 2 GiB and more work; otherwise it is signed. The result is the low half of the new
// position, which may be after the end.
// 0xFFFFFFFF on failure: 6, 87, 131 before the start. (For the position 0xFFFFFFFF itself the last error is 0.)
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method);

// Makes the file end at the handle's position: cuts the bytes after it, or extends the file. Fails with 5 without write
// access, 6, 31, 112.
BOOL SetEndOfFile(HANDLE file);

// Nonzero when all that was written through this handle is on the disk, and the file's directory entry
// too. Fails with 6, 5 without write access, 31, 112.
BOOL FlushFileBuffers(HANDLE file);

// Passes to the host what was written to the file and is still gathered in this process. From then on it survives the
// end of the process, but not a power cut. Costs nothing if nothing is gathered. Fails with the errors of WriteFile; a
// failure means that bytes which were reported as written are missing.
BOOL HandOverFileBuffers(HANDLE file);

// From now on, nothing of `file` is passed to the host before what is gathered for `earlier` by then. So `file` can
// name bytes of `earlier`, and after a kill it names none that aren't there. If those bytes are lost, what is gathered
// for `file` is lost, too, and its writes fail with the same error until SetEndOfFile cuts it. Ends with the last
// handle of `file`. Nonzero on success. Fails with 5 without write access to both, 6, and 87 for one file twice, for a
// temporary `file`, or if `earlier` is itself written after another file. For one thread at a time.
BOOL WriteAfter(HANDLE file, HANDLE earlier);

// Nonzero when all that this process made, wrote, renamed or deleted on the device, in its own folder and in each card
// and further folder, is on the disk. Covers all changes since the start or the last call, and costs nothing for a
// folder without changes. After a failure the other folders are still flushed. On failure the last error is that of the
// first folder that failed (31, 112), and a later call tries that folder again.
BOOL FlushChangedVolumes(void);

// Lets the host forget what it has cached of the file, so that later reads come from the disk where that is possible.
// Bytes that aren't on the disk yet stay. Nonzero on success, 0 with 6 or the host's error.
BOOL DropFromCache(HANDLE file);

// Nonzero on success, 0 with 6 for a handle that isn't an open file.
BOOL GetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION* information);

// The bytes that can still be written to the device's own folder, the card or the further folder that holds `path`, and
// its size. A card's capacity counts. Each pointer may be null. The path need not exist. Fails with 5, 31, 123, 206.
BOOL GetDiskFreeSpaceExW(const WCHAR* path, std::uint64_t* available, std::uint64_t* total, std::uint64_t* totalFree);

// Declares that the files which the program makes at `path` are temporary, until WithdrawTemporaryFile. Such a file
// counts for the capacity of its card, and all calls treat it like any other file. But it is not on the host as long as
// no call needs it there, so that it costs little, other programs don't see it, and nothing of it is left if the
// process is killed. It is put on the host before a search of its folder, FlushFileBuffers, HandOverFileBuffers,
// SetEndOfFile, GetFileInformationByHandle, FlushChangedVolumes, and any call with its path or a path below it, other
// than making it, opening it for reading, and deleting it. These calls fail as the making of a file does. If the
// process is killed afterwards, and the file is in the root, the next opening of the device moves it out of the name
// space; not so on a file system without extended attributes.
//
// If something stands at the path when it is declared, the declaration begins when that is deleted. What another
// program puts there later stays, and isn't seen as long as there is a temporary file. Fails with 3, 5, 123, 206.
BOOL DeclareTemporaryFile(const WCHAR* path);

// Ends a declaration. A file that is still there is put on the host and becomes an ordinary file. Fails as the making
// of that file does, also with 80, and then the declaration remains.
BOOL WithdrawTemporaryFile(const WCHAR* path);

// Fails with 2, 3, 5 for a folder, a read-only or a ROM file, 19, 32 while open in this process, 123, 206.
BOOL DeleteFileW(const WCHAR* path);

// Fails with 183 if a file or folder of that name exists, 3 if the parent is missing, 5, 19, 112, 123,
// 206. `security` is not used.
BOOL CreateDirectoryW(const WCHAR* path, const void* security);

// Removes an empty folder. Fails with 145 if the folder isn't empty, 2, 3 (also for a file), 5 for a card and the root,
// 19, 123, 206.
BOOL RemoveDirectoryW(const WCHAR* path);

// The attributes, FILE_ATTRIBUTE_NORMAL if none is set; needs no open and works on files in use. A folder may have a
// trailing backslash, and "\" is the root. The folder of a card has FILE_ATTRIBUTE_TEMPORARY, the entries below it
// don't.
// 0xFFFFFFFF on failure: 2, 3, 5, 123, 206.
DWORD GetFileAttributesW(const WCHAR* path);

// Whether it is certain that nothing stands at the path: GetFileAttributesW would fail with 2 or 3. Costs one question
// to the host, where that call needs several to distinguish the two errors. No last error.
BOOL IsNothingAt(const WCHAR* path);

// Begins a search; only the last part of `pattern` may contain * (any number of characters, also none) and ? (one
// character). "*" and "*.*" match every name; matching is without case. There are no entries "." and "..". The order is
// the host's; callers must not expect any. Files that come or go during the search may be seen or not. Names longer
// than 259 characters are left out.
// INVALID_HANDLE_VALUE on failure: 2 nothing matches, 3 no such folder, 5, 123, 206.
HANDLE FindFirstFileW(const WCHAR* pattern, WIN32_FIND_DATAW* found);

// As FindFirstFileW. `level` is FindExInfoStandard and `found` a WIN32_FIND_DATAW, `filter` null and `flags` 0;
// anything else fails with 87. With FindExSearchLimitToDirectories the search leaves out files, which saves asking the
// host about each. A caller must not rely on that: a real device may ignore it.
enum FINDEX_INFO_LEVELS { FindExInfoStandard };
enum FINDEX_SEARCH_OPS { FindExSearchNameMatch, FindExSearchLimitToDirectories };
HANDLE FindFirstFileExW(const WCHAR* pattern, FINDEX_INFO_LEVELS level, void* found, FINDEX_SEARCH_OPS operation,
                        const void* filter, DWORD flags);

// Nonzero with the next entry; 0 with 18 at the end, 6 for a handle that isn't a search.
BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* found);

// Nonzero on success, 0 with 6.
BOOL FindClose(HANDLE search);
