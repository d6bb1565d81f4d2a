// profile.h - files with options, which a user names by --profile.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace platform::device {

// $XDG_CONFIG_HOME/quillbox/NAME.toml, or $HOME/.config/quillbox/NAME.toml. Nothing if neither variable is an absolute
// path.
[[nodiscard]] std::optional<std::filesystem::path> profileFile(const std::string& name);

struct ProfileFault {
    std::size_t line = 0;  // 0: the fault isn't in one line
    std::string sentence;  // names the file and the line
};

// Returns what is wrong with single lines of a profile, in the order of the lines. Doesn't check whether the lines fit
// together.
[[nodiscard]] std::vector<ProfileFault> profileFaults(const std::filesystem::path& file);

// Returns what is wrong with an excerpt of a profile: the line of a section, and a line with a key and its value. Empty
// if nothing is wrong.
[[nodiscard]] std::string faultOfProfileLine(const std::string& lines);

}  // namespace platform::device
