// remembered_folders.h - reads and changes the list of the host folders that a device shows in its root at every start.
//
// The list is stored in the open device's database.
#pragma once

#include "device/extra_folder.h"

#include <string>
#include <vector>

namespace platform::device {

// Returns the folders in the order of their names. Throws a std::runtime_error with a sentence for the user if they
// can't be read.
[[nodiscard]] std::vector<ExtraFolder> rememberedFolders();

// Remembers a folder, which is shown from the next start on. Replaces a remembered folder of the same name. Returns
// false if the name isn't valid on the device or the database can't be written.
[[nodiscard]] bool rememberFolder(const ExtraFolder& folder);

// Forgets a folder. Returns false if no folder of that name is remembered or the database can't be written.
[[nodiscard]] bool forgetFolder(const std::string& name);

}  // namespace platform::device
