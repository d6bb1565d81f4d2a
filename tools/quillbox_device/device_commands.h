// device_commands.h - the commands that show a device, make a device, and change the list of host folders that a device
// shows in its root. A command that fails throws a Failure or another std::runtime_error.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace quillbox_device {

// Prints what the device contains, as text or as a JSON object.
void show(const std::filesystem::path& device, bool json);

// Makes a device in a folder that is missing or empty. With `demonstration`, the device gets sample content.
void init(const std::filesystem::path& device, bool demonstration);

// These commands list, add and remove folders of the host (the Linux system) that the device shows in its root at every
// start. `capacity` is the most bytes that the files of the folder may have together. With `plainFolder`, the device
// shows the folder as a plain folder and not as a card. removeCard() leaves the content of the folder as it is.
void listCards(const std::filesystem::path& device, bool json);
void addCard(const std::filesystem::path& device, const std::string& name, const std::filesystem::path& folder,
             std::optional<std::uint64_t> capacity, bool plainFolder);
void removeCard(const std::filesystem::path& device, const std::string& name);

}  // namespace quillbox_device
