// device_commands.h - the commands that show a device, make one, and change the folders that it shows. Each of them
// throws a Failure.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace quillbox_device {

// Prints what the device holds, as text or as a JSON object.
void show(const std::filesystem::path& device, bool json);

// Makes a device of a folder that is missing or empty. `demonstration`: with sample content.
void init(const std::filesystem::path& device, bool demonstration);

// Folders of the host that the device shows in its root at every start. `capacity` is in bytes. A plain folder isn't a
// card. `removeCard` leaves the folder's content as it is.
void listCards(const std::filesystem::path& device, bool json);
void addCard(const std::filesystem::path& device, const std::string& name, const std::filesystem::path& folder,
             std::optional<std::uint64_t> capacity, bool plainFolder);
void removeCard(const std::filesystem::path& device, const std::string& name);

}  // namespace quillbox_device
