// coverage.h - `quillbox-device covered`: checks whether undamaged sets contain everything that a device has.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quillbox_device {

// Compares every file, record, registry key and registry value of the device with the content of the undamaged sets,
// the newest set first. `where` has paths of sets and of folders with sets. A set that is stored on the device itself
// doesn't count. Prints what none of these sets contains. Also prints how much of the device's content is in
// each set but in no newer one, and leaves out sets without such content. The output consists of lines or of one JSON
// object. The command changes nothing on the device. Returns exitGood if everything is covered and the device didn't
// change meanwhile, otherwise exitFailed. Throws a Failure if no set is found or the device can't be read.
int showCoverage(const std::filesystem::path& device, const std::vector<std::string>& where, bool recursive, bool json);

}  // namespace quillbox_device
