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
    std::string sentence;  // names the file and the line, unless `line` is 0
};

// Returns what is wrong with single lines of a profile, in the order of the lines. Doesn't check whether the lines fit
// together. If the file can't be read, this is the only fault.
[[nodiscard]] std::vector<ProfileFault> profileFaults(const std::filesystem::path& file);

// Returns what is wrong with an excerpt of a profile: the line of a section, a line with a key and its value, or both.
// Returns an empty text if nothing is wrong. A missing option isn't a fault, because another line may have it.
[[nodiscard]] std::string faultOfProfileLine(const std::string& lines);

}  // namespace platform::device
