// registry_commands.h - the commands that export and import a device's registry as a .reg file. A command that fails
// throws a Failure or another std::runtime_error, and leaves the device unchanged unless the message says otherwise.
#pragma once

#include <filesystem>
#include <string>

namespace quillbox_device {

// `file` is the path of the new file, or "-" for standard output. If `force` is false and there already is a regular
// file or a block device at the path `file`, the function throws and writes nothing.
void exportRegistry(const std::filesystem::path& device, const std::string& file, bool force);

// Sets the keys and values that the file contains, and deletes those that it marks as deleted. Makes all of these
// changes or none. All other keys and values stay. `file` is a path, or "-" for standard input.
void importRegistry(const std::filesystem::path& device, const std::string& file);

}  // namespace quillbox_device
