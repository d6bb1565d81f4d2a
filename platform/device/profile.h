// profile.h - files with options, which a user names by --profile.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace platform::device {

// $XDG_CONFIG_HOME/quillbox/NAME.toml, or below ~/.config. Nothing if HOME isn't an absolute path.
[[nodiscard]] std::optional<std::filesystem::path> profileFile(const std::string& name);

struct ProfileFault {
    std::size_t line = 0;  // 0: the fault isn't in one line
    std::string sentence;  // names the file and the line
};

// What is wrong with the lines of a profile, in their order. Whether they go together isn't checked.
[[nodiscard]] std::vector<ProfileFault> profileFaults(const std::filesystem::path& file);

// What is wrong with these lines of a profile: a section and a key with its value. Empty if they are good.
[[nodiscard]] std::string faultOfProfileLine(const std::string& lines);

}  // namespace platform::device
