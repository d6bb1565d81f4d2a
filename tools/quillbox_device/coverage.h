// coverage.h - `quillbox-device covered`: whether sound sets hold everything that a device has.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quillbox_device {

// Compares every file, record and registry value of the device with what is in sound sets, the newest first, and prints
// what no set holds, and how much each set holds, as lines or as one JSON object. Nothing on the device is changed.
// Returns exitGood if everything is covered, otherwise exitFailed. Throws a Failure.
int showCoverage(const std::filesystem::path& device, const std::vector<std::string>& where, bool recursive, bool json);

}  // namespace quillbox_device
