// power_cut.h - records the bytes and folder entries that were never flushed, which a disk could lose at a power cut.
//
// Only tests link this file (target platform_file_faults). Each function can be called from any thread.
#pragma once

#include <cstdint>

namespace platform::file {

// Records that bytes or the size of the file are about to change. Call it before the change. The size that the file has
// before its first change is regarded as flushed.
void noteChange(int file);

// If the flushed size of the file is greater than `size`, lowers the flushed size to `size`. Call this function after
// the file's size was set to `size`.
void noteResize(int file, std::uint64_t size);

// Records a new directory entry. Call it after a file or folder was made at `path` below `folder`.
void noteMaking(int folder, const char* path);

// Records that an entry got another name or folder. Call it after the move.
void noteMove(int folder, const char* name, int newFolder, const char* newName);

// Records that the bytes of a file, or the entries of a folder, are on the disk. Call it after the flush.
void noteFlush(int fileOrFolder);

// Records that all bytes and entries of a file system are on the disk. `fileOrFolder` is on that file system. Call it
// after the flush of the whole file system.
void noteFileSystemFlush(int fileOrFolder);

// Cuts each changed file to its flushed size. Removes each new entry that wasn't flushed. If the move of an entry
// wasn't flushed, moves the entry back to its old name and folder.
void undoUnflushed();

// Forgets all that was recorded.
void forgetUnflushed();

}  // namespace platform::file
