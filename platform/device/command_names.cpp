#include "command_names.h"

#include "refusal.h"

#include "text/host_name.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace platform::device {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t MostNamed = 10;  // how many sets a sentence names at most

std::string inCapitals(std::string text)
{
    std::ranges::transform(text, text.begin(),
                           [](unsigned char byte) { return static_cast<char>(std::toupper(byte)); });
    return text;
}

// Converts a word to a path on the device. If the word begins with a slash, only slashes separate the names of its
// path, and a backslash is part of a name, as on the host. In any other word, both slashes and backslashes separate
// names.
std::u16string pathOf(const std::string& word)
{
    const std::string separators = word.starts_with('/') ? "/" : "/\\";
    std::u16string path;
    for (std::size_t at = 0; at < word.size();) {
        const std::size_t end = std::min(word.find_first_of(separators, at), word.size());
        if (end != at)
            path += u"\\" + text::toDeviceName(word.substr(at, end - at));
        at = end + 1;
    }
    return path;
}

bool isListFile(const fs::path& path)
{
    std::error_code error;
    return inCapitals(path.extension().string()) == ".QLT" && fs::is_regular_file(path, error);
}

std::vector<std::string> listsIn(const fs::path& folder)
{
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (isListFile(entry->path()))
            names.push_back(entry->path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

// The sentence for a user who named a folder instead of a set.
std::string setIsWanted(const fs::path& folder)
{
    std::vector<std::string> names = listsIn(folder);
    std::string inner;
    if (names.empty() && !(names = listsIn(folder / "QUILBOX")).empty())
        inner = "QUILBOX/";
    if (names.empty())
        return "There is no set in the folder " + quoted(folder) + ".";
    std::string sentence = quoted(folder) + " is a folder. Name one of its sets: ";
    const std::size_t named = std::min(names.size(), MostNamed);
    for (std::size_t i = 0; i < named; i++)
        sentence += (i == 0 ? "" : ", ") + inner + names[i];
    return sentence + (named < names.size() ? " and " + std::to_string(names.size() - named) + " more." : ".");
}

// Returns the list file of the set that the word names, or an empty path if there is none. The word can end in .QLT, in
// .QDT or in neither.
fs::path listFileOf(const fs::path& word)
{
    const std::string extension = inCapitals(word.extension().string());
    fs::path stem = word;
    if (extension == ".QLT" || extension == ".QDT")
        stem.replace_extension();
    for (const char* ending : {".QLT", ".qlt"}) {
        fs::path list = stem.string() + ending;
        if (isListFile(list))
            return list;
    }
    return isListFile(word) ? word : fs::path();
}

}  // namespace

NamedStorage storageNamed(const std::string& word)
{
    if (word == "Main device")
        return {};
    if (word.find('/') != std::string::npos || word == "." || word == "..")
        return {fs::path(word), u""};
    return {std::nullopt, pathOf(word)};
}

NamedSet setNamed(const std::string& word)
{
    std::error_code error;
    if (word.starts_with('\\')) {
        std::u16string path = pathOf(word);
        const bool hasEnding = inCapitals(fs::path(word).extension().string()) == ".QLT";
        return {std::nullopt, hasEnding ? path : path + u".QLT", ""};
    }
    if (fs::is_directory(word, error))
        return {std::nullopt, u"", setIsWanted(word)};
    fs::path list = listFileOf(word);
    if (list.empty())
        return {std::nullopt, u"", "There is no set \"" + word + "\"."};
    return {std::move(list), u"", ""};
}

NamedItems itemsNamed(const std::vector<std::string>& words)
{
    NamedItems items;
    for (const std::string& word : words) {
        if (word.starts_with('/') || word.starts_with('\\'))
            items.paths.push_back(pathOf(word));
        else if (word == "registry")
            items.registry = true;
        else
            items.databases.push_back(text::fromUtf8(word));
    }
    return items;
}

}  // namespace platform::device
