// power_cut.h - records what a disk would lose at a power cut: bytes and folder entries that were never flushed.
//
// Only tests link it (target platform_file_faults). Each function can be called from any thread.
#pragma once

#include <cstdint>

namespace platform::file {

// Before a write or a change of size. The size that the file has at its first change counts as flushed.
void noteChange(int file);

// After the file's size was set to `size`.
void noteResize(int file, std::uint64_t size);

// After a file or folder was made at `path` below `folder`.
void noteMaking(int folder, const char* path);

// After an entry got another name or folder.
void noteMove(int folder, const char* name, int newFolder, const char* newName);

// After a flush of a file or a folder.
void noteFlush(int fileOrFolder);

// After a flush of the whole file system that holds the file or folder.
void noteFileSystemFlush(int fileOrFolder);

// Removes from the disk everything that was not flushed.
void undoUnflushed();

// Forgets all that was recorded.
void forgetUnflushed();

}  // namespace platform::file
