#include "command_line.h"

#include "profile.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <sstream>
#include <string_view>

namespace platform::device {

namespace {

namespace fs = std::filesystem;

constexpr int BadUsage = 2;
constexpr double LongestTimeout = 1e9;  // seconds
constexpr std::string_view CapacityMark = ",capacity=";

// The largest number that the database can store. No disk has so many bytes.
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

// Parses NAME=DIR or NAME=DIR,capacity=BYTES. Only the last ",capacity=" ends the folder, so the folder may contain
// commas.
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

fs::path profilePath(const std::string& name)
{
    if (name.empty() || name.find('/') != std::string::npos)
        refuseOption("--profile", name, "isn't the name of a profile");
    const auto file = profileFile(name);
    if (!file)
        refuseOption("--profile", name, "can't be found, because HOME isn't an absolute path");
    return *file;
}

void refuseNameTwice(const std::vector<ExtraFolder>& extras)
{
    for (auto extra = extras.begin(); extra != extras.end(); ++extra)
        if (std::any_of(extras.begin(), extra, [&](const ExtraFolder& earlier) { return earlier.name == extra->name; }))
            throw CLI::ValidationError("The name \"" + extra->name + "\" is given twice");
}

// The parser with the values that it fills in.
class Parser {
public:
    Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;
    ~Parser() = default;

    ParsedCommandLine parse(int count, const char* const* words);
    // Reads lines of a profile, without a command line. If something is wrong with the lines, for example if an option
    // is missing, throws an exception that says so.
    void readProfile(std::istream& lines)
    {
        app_.parse_from_stream(lines);
        (void)given();
    }

private:
    void addDevice();
    void addScript();
    CommandLine given();
    [[nodiscard]] std::string faultsOfProfile() const;  // lines for standard error

    CLI::App app_{"Backs up and restores a device: its files, databases and registry.", "quillbox"};
    CommandParser commands_;
    std::vector<std::string> cards_;
    std::vector<std::string> folders_;
    std::string device_;
    std::string script_;
    std::string transcript_;
    std::string timeout_ = "60";
    std::string mediaFolder_;
    std::string set_;
    std::string profile_;  // the path of the profile's file
    CLI::Option* deviceOption_ = nullptr;
    CLI::Option* mediaOption_ = nullptr;
    CLI::Option* scriptOption_ = nullptr;
    CLI::Option* transcriptOption_ = nullptr;
};

Parser::Parser()
{
    app_.set_version_flag("--version", "quillbox " QUILLBOX_VERSION);
    addDevice();
    addScript();
    app_.add_option("SET", set_,
                    "The list file of a set (*.QLT); the window opens with the items of this set to choose from")
        ->excludes(scriptOption_);
    app_.allow_config_extras(CLI::config_extras_mode::error);
    app_.set_config("--profile", "",
                    "Reads options from NAME.toml in ~/.config/quillbox; those of the command line win")
        ->type_name("NAME")
        ->transform(CLI::Validator(
            [this](std::string& name) { return name = profile_ = profilePath(name).string(), std::string(); }, ""));
    commands_.addTo(app_);
}

void Parser::addDevice()
{
    deviceOption_ = app_.add_option("--device", device_, "The device's folder; created if it is missing");
    deviceOption_->type_name("DIR");
    // Each --card and each --folder takes one value. Otherwise a second word after the option would be a second card or
    // folder and not an error.
    app_.add_option("--card", cards_, "A folder of this computer as a card, for this start")
        ->type_name("NAME=DIR[,capacity=BYTES]")
        ->allow_extra_args(false);
    app_.add_option("--folder", folders_, "A folder of this computer in the device's root, for this start")
        ->type_name("NAME=DIR")
        ->allow_extra_args(false);
    mediaOption_ = app_.add_option("--media", mediaFolder_,
                                   "Shows what is mounted in DIR as cards. The default of the window is the folder of "
                                   "this user's media");
    mediaOption_->type_name("DIR");
}

void Parser::addScript()
{
    scriptOption_ =
        app_.add_option("--script", script_, "Runs the actions in FILE without a screen (- is standard input)");
    scriptOption_->type_name("FILE|-");
    app_.add_option("--timeout", timeout_, "The longest wait of an action; 0 is no limit")
        ->type_name("SECONDS")
        ->capture_default_str()
        ->needs(scriptOption_);
    transcriptOption_ = app_.add_option("--transcript", transcript_,
                                        "Writes windows, texts and answers to FILE (- is standard output)");
    transcriptOption_->type_name("FILE|-")->needs(scriptOption_);
}

CommandLine Parser::given()
{
    CommandLine options;
    for (const std::string& card : cards_)
        options.extras.push_back(parseCard("--card", card));
    for (const std::string& folder : folders_)
        options.extras.push_back(parseFolder("--folder", folder));
    refuseNameTwice(options.extras);
    options.timeout = parseTimeout(timeout_);
    options.command = commands_.given();
    if (options.command && (scriptOption_->count() > 0 || !set_.empty()))
        throw CLI::ValidationError((set_.empty() ? "--script" : "\"" + set_ + "\"") + " isn't for this command");
    if (!set_.empty() && !set_.ends_with("QLT"))
        refuseOption("SET", set_, "is not the list of a set, whose name ends in QLT");
    if (device_.empty() && deviceOption_->count() > 0)
        refuseOption("--device", device_, "names no folder");
    options.device = deviceFolder(device_);
    if (scriptOption_->count() > 0)
        options.script = script_;
    if (!set_.empty())
        options.set = set_;
    if (!mediaFolder_.empty())
        options.mediaFolders = {mediaFolder_};
    else if (mediaOption_->count() == 0 && !options.script && !options.command)
        options.mediaFolders = usualMediaFolders();
    if (transcriptOption_->count() > 0)
        options.transcript = transcript_;
    return options;
}

std::string Parser::faultsOfProfile() const
{
    std::string faults;
    if (!profile_.empty())
        for (const ProfileFault& fault : profileFaults(profile_))
            faults += "quillbox: " + fault.sentence + "\n";
    return faults;
}

ParsedCommandLine Parser::parse(int count, const char* const* words)
{
    try {
        app_.parse(count, words);
        const CommandLine options = given();
        const std::string faults = faultsOfProfile();  // the parser doesn't notice that a # has cut a value
        return faults.empty() ? ParsedCommandLine{options, "", 0} : ParsedCommandLine{std::nullopt, faults, BadUsage};
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream errors;
        if (app_.exit(error, out, errors) == 0)
            return {std::nullopt, out.str(), 0};
        const std::string faults = faultsOfProfile();
        return {std::nullopt, faults.empty() ? errors.str() : faults, BadUsage};
    }
}

}  // namespace

ParsedCommandLine parseCommandLine(int count, const char* const* words)
{
    return Parser().parse(count, words);
}

std::string faultOfProfileLine(const std::string& lines)
{
    std::istringstream read(lines);
    try {
        Parser().readProfile(read);
    } catch (const CLI::RequiredError&) {  // another line may have what is missing
    } catch (const CLI::RequiresError&) {
    } catch (const CLI::ConfigError& error) {
        const std::string key = error.what();
        return key.substr(key.rfind(' ') + 1) + " isn't an option";
    } catch (const CLI::ParseError& error) {
        return error.what();
    }
    return "";
}

}  // namespace platform::device
