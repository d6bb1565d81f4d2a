#include "set_folder.h"

#include "exit_code.h"
#include "json_list.h"
#include "listed_set.h"
#include "screen_text/screen_text.h"
#include "set_files.h"

#include "text/host_name.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>

namespace quillbox_set {

using screen_text::onScreen;

namespace {

namespace fs = std::filesystem;

constexpr std::string_view FolderOfSets = "QUILBOX";
constexpr std::size_t MostNamed = 10;  // in a sentence

std::vector<std::string> namesIn(const fs::path& folder, bool& readFailed)
{
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error))
        names.push_back(entry->path().filename().string());
    readFailed = static_cast<bool>(error);
    std::ranges::sort(names);
    return names;
}

SetFolder setsOf(const fs::path& folder)
{
    SetFolder found{folder.string(), {}};
    found.lists = namesIn(folder, found.readFailed);
    std::erase_if(found.lists, [](const std::string& name) { return !isListFile(name); });
    return found;
}

std::string noSet(const SetFolder& folder)
{
    return (folder.readFailed ? "this folder couldn't be read to its end: " : "there is no set in the folder ") +
           onScreen(folder.path);
}

std::u16string firstLine(std::u16string_view comment)
{
    return std::u16string(comment.substr(0, comment.find_first_of(u"\r\n")));
}

}  // namespace

std::optional<SetFolder> findSets(const std::string& argument)
{
    std::error_code error;
    if (!fs::is_directory(argument, error))
        return std::nullopt;
    SetFolder own = setsOf(argument);
    if (!own.lists.empty())
        return own;
    for (const std::string& name : namesIn(argument, own.readFailed)) {
        if (!isSameWithoutCase(name, FolderOfSets))
            continue;
        if (SetFolder inner = setsOf(fs::path(argument) / name); inner.readFailed || !inner.lists.empty())
            return inner;
    }
    return own;
}

int listSets(const SetFolder& folder, bool json)
{
    if (folder.lists.empty()) {
        std::cerr << "quillbox-set: " << noSet(folder) << "\n";
        return exitNoSet;
    }
    auto mounted = mountSet({folder.path, "", ""}, folder.path);
    if (!mounted) {
        std::cerr << "quillbox-set: a folder can't be opened: " << onScreen(folder.path) << "\n";
        return exitNoSet;
    }
    std::optional<JsonList> list;
    if (json)
        list.emplace(nlohmann::ordered_json::object(), "sets");
    int code = folder.readFailed ? exitFaults : exitGood;
    if (folder.readFailed)
        std::cerr << "quillbox-set: this folder couldn't be read to its end: " << onScreen(folder.path) << "\n";
    for (const std::string& name : folder.lists) {
        const std::string path = (fs::path(folder.path) / name).string();
        mounted->listPath = u"\\" + mounted->folder + u"\\" + platform::text::toDeviceName(name);
        const ListedSet set(*mounted);
        if (!set.isOpen() || set.readFailed()) {
            std::cerr << "quillbox-set: the list file can't be read: " << onScreen(path) << "\n";
            code = exitFaults;
            continue;
        }
        const std::u16string comment = firstLine(set.comment());
        if (list)
            list->add({{"list", path}, {"comment", platform::text::toUtf8(comment)}});
        else
            std::printf("%s  %s\n", onScreen(path).c_str(), onScreen(comment).c_str());
    }
    if (list)
        list->end({{"count", folder.lists.size()}});
    return code;
}

std::string setIsWanted(const SetFolder& folder)
{
    if (folder.lists.empty())
        return noSet(folder);
    std::string sentence = onScreen(folder.path) + " is a folder; name one of its sets: ";
    const std::size_t named = std::min(folder.lists.size(), MostNamed);
    for (std::size_t at = 0; at < named; ++at)
        sentence += (at == 0 ? "" : ", ") + onScreen(folder.lists[at]);
    if (named < folder.lists.size())
        sentence += " and " + std::to_string(folder.lists.size() - named) + " more";
    return sentence;
}

}  // namespace quillbox_set
