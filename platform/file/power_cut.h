// power_cut.h - records the bytes and folder entries that were never flushed, which a disk could lose at a power cut.
//
// Only tests link this file (target platform_file_faults). Each function can be called from any thread.
#pragma once

#include <cstdint>

namespace platform::file {

// Call it before a write or a change of size. The size that the file has before its first change is regarded as
// flushed.
void noteChange(int file);

// Call it after the file's size was set to `size`.
void noteResize(int file, std::uint64_t size);

// Call it after a file or folder was made at `path` below `folder`.
void noteMaking(int folder, const char* path);

// Call it after an entry got another name or folder.
void noteMove(int folder, const char* name, int newFolder, const char* newName);

// Call it after a flush of a file or a folder.
void noteFlush(int fileOrFolder);

// Call it after a flush of the whole file system that holds the file or folder.
void noteFileSystemFlush(int fileOrFolder);

// Removes from the disk everything that was not flushed.
void undoUnflushed();

// Forgets all that was recorded.
void forgetUnflushed();

}  // namespace platform::file
