// registry_commands.h - the commands that export and import a device's registry as a .reg file. Each of them throws a
// Failure, and has changed nothing then unless the message says so.
#pragma once

#include <filesystem>
#include <string>

namespace quillbox_device {

// `file`: see Output (archive/host_output.h).
void exportRegistry(const std::filesystem::path& device, const std::string& file, bool force);

// Sets the keys and values that the file contains. All others stay. `file`: see Input (host_input.h).
void importRegistry(const std::filesystem::path& device, const std::string& file);

}  // namespace quillbox_device
