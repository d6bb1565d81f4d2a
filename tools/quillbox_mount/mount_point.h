// mount_point.h - what has to be there before sets can be mounted.
#pragma once

#include <string>

namespace quillbox_mount {

// Why the folder can't be mounted on: a sentence without its point. Empty if it is an empty folder.
std::string folderFault(const std::string& folder);

// Why this computer can't mount a file system of a user's program. Empty if it can, as far as that shows.
std::string computerFault();

}  // namespace quillbox_mount
