// profile.h - finds and checks profiles, which are files with command-line options. --profile selects a profile.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace platform::device {

// Returns $XDG_CONFIG_HOME/quillbox/NAME.toml, or $HOME/.config/quillbox/NAME.toml. Returns nothing if neither variable
// is an absolute path.
[[nodiscard]] std::optional<std::filesystem::path> profileFile(const std::string& name);

struct ProfileFault {
    std::size_t line = 0;  // 0: the fault isn't in one line
    std::string sentence;  // if `line` isn't 0, it names the profile's file and the line
};

// Returns what is wrong with single lines of a profile, in the order of the lines. Doesn't check whether the lines fit
// together. If the file can't be read, this is the only fault.
[[nodiscard]] std::vector<ProfileFault> profileFaults(const std::filesystem::path& file);

// Checks an excerpt of a profile. `lines` contains the line of a section, a line with a key and its value, or both.
// Returns what is wrong, or an empty text if nothing is wrong. A missing option isn't a fault, because another line may
// have it.
[[nodiscard]] std::string faultOfProfileLine(const std::string& lines);

}  // namespace platform::device
