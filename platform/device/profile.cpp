#include "profile.h"

#include "device/device.h"
#include "refusal.h"

#include <fstream>

namespace platform::device {

namespace {

namespace fs = std::filesystem;

std::string trimmed(const std::string& line)
{
    const std::size_t begin = line.find_first_not_of(" \t\r");
    return begin == std::string::npos ? "" : line.substr(begin, line.find_last_not_of(" \t\r") + 1 - begin);
}

// Returns true if the value of the entry begins with a quote that isn't closed. A # ends the value even within quotes,
// because the parser of profiles ends a value there too.
bool hasOpenQuote(const std::string& entry)
{
    const std::string value = trimmed(entry.substr(0, entry.find('#')).substr(entry.find('=') + 1));
    return !value.empty() && (value.front() == '"' || value.front() == '\'') &&
           (value.size() == 1 || value.back() != value.front());
}

std::string faultOf(const std::string& section, const std::string& entry)
{
    if (hasOpenQuote(entry))
        return "a quote isn't closed. A value can't contain the character #";
    return faultOfProfileLine(section + "\n" + entry + "\n");
}

bool isOpenArray(const std::string& entry)
{
    const std::string value = trimmed(entry.substr(entry.find('=') + 1));
    return entry.find('=') != std::string::npos && value.starts_with('[') && !value.ends_with(']');
}

}  // namespace

std::optional<fs::path> profileFile(const std::string& name)
{
    const auto folder = userFolder("XDG_CONFIG_HOME", ".config");
    return folder ? std::optional(*folder / "quillbox" / (name + ".toml")) : std::nullopt;
}

std::vector<ProfileFault> profileFaults(const fs::path& file)
{
    std::ifstream read(file);
    if (!read)
        return {{0, "The profile " + quoted(file) + " can't be read."}};
    std::vector<ProfileFault> faults;
    std::string section;
    bool isKnown = true;
    std::string line;
    for (std::size_t number = 1; std::getline(read, line); number++) {
        const std::size_t first = number;
        std::string entry = trimmed(line);
        if (entry.empty() || entry.starts_with('#') || entry.starts_with(';'))
            continue;
        for (; isOpenArray(entry) && std::getline(read, line); number++)
            entry += trimmed(line);
        std::string fault;
        if (entry.starts_with('[') && entry.ends_with(']')) {
            section = entry;
            isKnown = faultOfProfileLine(section + "\n").empty();
            fault = isKnown ? "" : entry + " isn't a command";
        } else if (isKnown) {
            fault = faultOf(section, entry);
        }
        if (!fault.empty())
            faults.push_back({first, quoted(file) + ", line " + std::to_string(first) + ": " + fault + "."});
    }
    return faults;
}

}  // namespace platform::device
