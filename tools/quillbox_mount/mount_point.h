// mount_point.h - checks whether sets can be mounted on a folder, and whether this computer can mount them.
#pragma once

#include <string>

namespace quillbox_mount {

// Returns why nothing can be mounted on the folder, as a sentence without its final point. Returns an empty text if the
// folder exists and is empty.
std::string folderFault(const std::string& folder);

// Returns why this computer can't mount a FUSE file system, which a program without root rights provides. Returns an
// empty text if nothing is known to prevent the mount.
std::string computerFault();

}  // namespace quillbox_mount
