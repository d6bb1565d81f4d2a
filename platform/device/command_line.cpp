#include "command_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <sstream>
#include <string_view>

namespace platform::device {

namespace {

constexpr int BadUsage = 2;
constexpr double LongestTimeout = 1e9;  // seconds
constexpr std::string_view CapacityMark = ",capacity=";

// The largest number that the database can store. It is more than any disk of the host.
constexpr std::uint64_t LargestCapacity = INT64_MAX;

[[noreturn]] void refuseOption(const std::string& option, const std::string& value, const std::string& why)
{
    throw CLI::ValidationError(option, "\"" + value + "\" " + why);
}

// Parses NAME=DIR. The folder may contain any characters, also equals signs and commas.
ExtraFolder parseFolder(const std::string& option, const std::string& value)
{
    const std::size_t equals = value.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == value.size())
        refuseOption(option, value, "doesn't have the format NAME=DIR");
    ExtraFolder folder;
    folder.name = value.substr(0, equals);
    folder.folder = value.substr(equals + 1);
    return folder;
}

// Parses NAME=DIR or NAME=DIR,capacity=BYTES. Only the last ",capacity=" counts, so the folder may contain commas.
ExtraFolder parseCard(const std::string& option, const std::string& value)
{
    ExtraFolder card = parseFolder(option, value);
    card.card = true;
    const std::string folder = card.folder.string();
    const std::size_t mark = folder.rfind(CapacityMark);
    if (mark == std::string::npos)
        return card;

    std::uint64_t bytes = 0;
    const char* const end = folder.data() + folder.size();
    const auto [stopped, error] = std::from_chars(folder.data() + mark + CapacityMark.size(), end, bytes);
    if (error != std::errc() || stopped != end || bytes > LargestCapacity)
        refuseOption(option, value, "has a capacity that is not a number of bytes");
    if (mark == 0)
        refuseOption(option, value, "names no folder");
    card.folder = folder.substr(0, mark);
    card.capacity = bytes;
    return card;
}

// Parses seconds, with or without a fraction. The condition also refuses NaN.
std::chrono::milliseconds parseTimeout(const std::string& value)
{
    double seconds = 0;
    const char* const end = value.data() + value.size();
    const auto [stopped, error] = std::from_chars(value.data(), end, seconds);
    if (error != std::errc() || stopped != end || !(seconds >= 0 && seconds <= LongestTimeout))
        refuseOption("--timeout", value, "is not a time in seconds");
    return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

std::filesystem::path deviceFolder(const std::string& named)
{
    if (!named.empty())
        return named;
    if (auto usual = defaultDeviceFolder())
        return *usual;
    throw CLI::ValidationError(
        "HOME isn't an absolute path, so there is no default device. Name one with --device DIR");
}

// The file of the profile, which is TOML.
std::string profilePath(const std::string& name)
{
    if (name.empty() || name.find('/') != std::string::npos)
        refuseOption("--profile", name, "isn't the name of a profile");
    const auto folder = userFolder("XDG_CONFIG_HOME", ".config");
    if (!folder)
        refuseOption("--profile", name, "can't be found, because HOME isn't an absolute path");
    return *folder / "quillbox" / (name + ".toml");
}

void refuseNameTwice(const std::vector<ExtraFolder>& extras)
{
    for (auto extra = extras.begin(); extra != extras.end(); ++extra)
        if (std::any_of(extras.begin(), extra, [&](const ExtraFolder& earlier) { return earlier.name == extra->name; }))
            throw CLI::ValidationError("The name \"" + extra->name + "\" is given twice");
}

}  // namespace

ParsedCommandLine parseCommandLine(int count, const char* const* words)
{
    CommandLine options;
    std::vector<std::string> cards;
    std::vector<std::string> folders;
    std::string device;
    std::string script;
    std::string transcript;
    std::string timeout = "60";
    std::string mediaFolder;
    std::string set;

    CLI::App app("Backs up and restores a device: its files, databases and registry.", "quillbox");
    app.set_version_flag("--version", "quillbox " QUILLBOX_VERSION);
    auto* named = app.add_option("--device", device, "The device's folder; created if it is missing")->type_name("DIR");
    // One value per option, so that a second word after the option is an error and not a second card.
    app.add_option("--card", cards, "A folder of this computer as a card, for this start")
        ->type_name("NAME=DIR[,capacity=BYTES]")
        ->allow_extra_args(false);
    app.add_option("--folder", folders, "A folder of this computer in the device's root, for this start")
        ->type_name("NAME=DIR")
        ->allow_extra_args(false);
    auto* scripted =
        app.add_option("--script", script, "Runs the actions in FILE without a screen (- is standard input)")
            ->type_name("FILE|-");
    app.add_option("--timeout", timeout, "The longest wait of an action; 0 is no limit")
        ->type_name("SECONDS")
        ->capture_default_str()
        ->needs(scripted);
    auto* recorded =
        app.add_option("--transcript", transcript, "Writes windows, texts and answers to FILE (- is standard output)")
            ->type_name("FILE|-")
            ->needs(scripted);
    auto* media = app.add_option("--media", mediaFolder,
                                 "Shows what is mounted in DIR as cards. The default is the folder of this user's "
                                 "media, with a script none")
                      ->type_name("DIR");
    app.add_option("SET", set,
                   "The list of a set (its *.QLT file): the window opens with the choice of what to restore")
        ->excludes(scripted);
    app.allow_config_extras(CLI::config_extras_mode::error);
    app.set_config("--profile", "", "Reads options from NAME.toml in ~/.config/quillbox; those of the command line win")
        ->type_name("NAME")
        ->transform(CLI::Validator([](std::string& name) { return name = profilePath(name), std::string(); }, ""));
    CommandParser commands;
    commands.addTo(app);
    try {
        app.parse(count, words);
        for (const std::string& card : cards)
            options.extras.push_back(parseCard("--card", card));
        for (const std::string& folder : folders)
            options.extras.push_back(parseFolder("--folder", folder));
        refuseNameTwice(options.extras);
        options.timeout = parseTimeout(timeout);
        options.command = commands.given();
        if (options.command && (scripted->count() > 0 || !set.empty()))
            throw CLI::ValidationError((set.empty() ? "--script" : "\"" + set + "\"") + " isn't for this command");
        if (!set.empty() && !set.ends_with("QLT"))
            refuseOption("SET", set, "is not the list of a set, whose name ends in QLT");
        if (device.empty() && named->count() > 0)
            refuseOption("--device", device, "names no folder");
        options.device = deviceFolder(device);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream errors;
        const bool fine = app.exit(error, out, errors) == 0;
        return {std::nullopt, fine ? out.str() : errors.str(), fine ? 0 : BadUsage};
    }
    if (scripted->count() > 0)
        options.script = script;
    if (!set.empty())
        options.set = set;
    if (!mediaFolder.empty())
        options.mediaFolders = {mediaFolder};
    else if (media->count() == 0 && !options.script && !options.command)
        options.mediaFolders = usualMediaFolders();
    if (recorded->count() > 0)
        options.transcript = transcript;
    return {std::move(options), "", 0};
}

}  // namespace platform::device
