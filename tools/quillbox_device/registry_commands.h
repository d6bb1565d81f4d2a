// registry_commands.h - the commands that export and import a device's registry as a .reg file. A command that fails
// throws a Failure. It has then changed nothing on the device, unless the message says otherwise.
#pragma once

#include <filesystem>
#include <string>

namespace quillbox_device {

// `file` has the same meaning as for an Output (archive/host_output.h).
void exportRegistry(const std::filesystem::path& device, const std::string& file, bool force);

// Sets the keys and values that the file contains. All others stay. `file` has the same meaning as for an Input
// (host_input.h).
void importRegistry(const std::filesystem::path& device, const std::string& file);

}  // namespace quillbox_device
