// extra_folder.h - a folder of the host that appears in the device's root.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace platform::device {

struct ExtraFolder {
    std::string name;              // in the device's root, as UTF-8
    std::filesystem::path folder;  // on the host
    bool card = false;
    std::optional<std::uint64_t> capacity;  // the most bytes that its files may have together
};

}  // namespace platform::device
