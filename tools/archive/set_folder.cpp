#include "archive/set_folder.h"

#include "archive/set_files.h"
#include "screen_text/screen_text.h"

#include <algorithm>
#include <filesystem>

namespace archive {

using screen_text::onScreen;

namespace {

namespace fs = std::filesystem;

constexpr std::string_view FolderOfSets = "QUILBOX";
constexpr std::size_t MostNamed = 10;  // of the list files in one message

}  // namespace

SetFolder listsIn(const std::string& folder)
{
    FolderNames names(folder);
    SetFolder found{folder, names.sorted(), names.readFailed(), names.reason()};
    std::erase_if(found.lists, [](const std::string& name) { return !isListFile(name); });
    return found;
}

std::optional<SetFolder> findSets(const std::string& argument)
{
    std::error_code error;
    if (!fs::is_directory(argument, error))
        return std::nullopt;
    SetFolder own = listsIn(argument);
    if (!own.lists.empty())
        return own;
    FolderNames names(argument);
    for (const std::string& name : names.sorted()) {
        if (!isSameWithoutCase(name, FolderOfSets))
            continue;
        if (SetFolder inner = listsIn((fs::path(argument) / name).string()); inner.readFailed || !inner.lists.empty())
            return inner;
    }
    return own;
}

std::string notRead(const SetFolder& folder)
{
    return "this folder can't be read (" + folder.reason + "): " + onScreen(folder.path);
}

std::string noSetIn(const SetFolder& folder)
{
    return folder.readFailed ? notRead(folder) : "there is no set in the folder " + onScreen(folder.path);
}

std::string setIsWanted(const SetFolder& folder)
{
    if (folder.lists.empty())
        return noSetIn(folder);
    std::string sentence = onScreen(folder.path) + " is a folder; name one of its sets: ";
    const std::size_t named = std::min(folder.lists.size(), MostNamed);
    for (std::size_t at = 0; at < named; ++at)
        sentence += (at == 0 ? "" : ", ") + onScreen(folder.lists[at]);
    if (named < folder.lists.size())
        sentence += " and " + std::to_string(folder.lists.size() - named) + " more";
    return sentence;
}

}  // namespace archive
