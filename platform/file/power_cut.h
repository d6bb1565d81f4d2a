// power_cut.h - knows what a disk would lose at a power cut: bytes and entries that were never flushed.
// Told by the host calls while a fault plan asks for it; a tool of tests, so clarity goes before speed.
#pragma once

#include <cstdint>

namespace platform::file {

// Before a write or cut: how much of it was on the disk before it was first touched.
void noteTouched(int file);

// After a cut to `size`.
void noteCut(int file, std::uint64_t size);

// After a file or folder `path` below `folder` was made.
void noteMade(int folder, const char* path);

// After an entry got another name or folder.
void noteMoved(int folder, const char* name, int newFolder, const char* newName);

// After a flush of a file or a folder.
void noteFlushed(int fileOrFolder);

// After a flush of the whole file system that holds it.
void noteAllFlushed(int fileOrFolder);

// Takes all that off the disk which was not flushed.
void takeBackUnflushed();

void forgetUnflushed();

}  // namespace platform::file
