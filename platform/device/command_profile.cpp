#include "command_line.h"
#include "command_names.h"
#include "command_outcome.h"
#include "command_runs.h"
#include "exit_codes.h"
#include "profile.h"
#include "refusal.h"
#include "telling.h"

#include <array>
#include <fstream>
#include <sstream>

namespace platform::device {

namespace {

namespace fs = std::filesystem;

std::string textOf(const fs::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

void addMissingFolders(const CommandLine& line, std::vector<ProfileFault>& faults)
{
    std::error_code error;
    if (!fs::is_directory(line.device / "object-store", error))
        faults.push_back({0, quoted(line.device) + " is not a device: it has no folder \"object-store\"."});
    for (const ExtraFolder& extra : line.extras)
        if (!fs::is_directory(extra.folder, error))
            faults.push_back({0, "The folder " + quoted(extra.folder) + " of \"" + extra.name + "\" doesn't exist."});
    const auto* backup = line.command ? std::get_if<BackupOptions>(&line.command->options) : nullptr;
    const auto storage = backup ? storageNamed(backup->to).folder : std::nullopt;
    if (storage && !fs::is_directory(*storage, error))
        faults.push_back({0, "The folder " + quoted(*storage) + " for the sets doesn't exist now."});
}

// Adds the faults that a check of each single line can't find, for example a missing folder. Call this function only if
// that check (profileFaults) has found no fault.
void addCommonFaults(const std::string& name, const std::string& text, std::vector<ProfileFault>& faults)
{
    const bool backsUp = text.find("[backup]") != std::string::npos;
    const std::array<const char*, 4> words = {"quillbox", "--profile", name.c_str(), "backup"};
    const auto parsed = parseCommandLine(backsUp ? 4 : 3, words.data());
    if (parsed.options)
        addMissingFolders(*parsed.options, faults);
    else
        faults.push_back({0, parsed.message.substr(0, parsed.message.find('\n'))});
}

}  // namespace

int runProfile(const Command& command, const ProfileOptions& options)
{
    const auto file = options.name.find('/') == std::string::npos ? profileFile(options.name) : std::nullopt;
    std::error_code error;
    if (!file || !fs::is_regular_file(*file, error))
        return endRefused(command, "There is no profile " + quoted(file ? *file : fs::path(options.name)) + ".",
                          ExitBadUsage);
    const std::string text = textOf(*file);
    std::vector<ProfileFault> faults = profileFaults(*file);
    if (options.check && faults.empty())
        addCommonFaults(options.name, text, faults);
    nlohmann::ordered_json json = {{"profile", file->string()}, {"faults", nlohmann::ordered_json::array()}};
    for (const ProfileFault& fault : faults)
        json["faults"].push_back({{"line", fault.line}, {"sentence", fault.sentence}});
    if (!options.check)
        json["text"] = text;
    const std::string good = "The profile " + quoted(*file) + " is good.\n";
    print(command, options.check ? faults.empty() ? good : "" : text, json);
    for (const ProfileFault& fault : faults)
        if (options.check && !command.json)
            (void)tell(fault.sentence, ExitBadUsage);
    return options.check && !faults.empty() ? ExitBadUsage : ExitComplete;
}

}  // namespace platform::device
