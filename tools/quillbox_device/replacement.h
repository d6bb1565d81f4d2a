// replacement.h - what a new file needs before it takes an old one's place.
#pragma once

#include <filesystem>

#include <sys/stat.h>

namespace quillbox_device {

// Gives a file the owner, the group and the mode of `old`. An owner or group that can't be given is left, and nobody
// gets a right by that: what the old group might do, another one may not. False if the mode can't be set.
[[nodiscard]] bool takesRights(const std::filesystem::path& file, const struct stat& old);

// Puts a file or folder on the disk. False, and errno, if that fails.
[[nodiscard]] bool flushed(const std::filesystem::path& path);

// The same of what is open; a pipe and whatever else has no disk is no failure. Of a descriptor that was there before
// the first write, so that the host tells of each write that failed.
[[nodiscard]] bool flushed(int opened);

}  // namespace quillbox_device
