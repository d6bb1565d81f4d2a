#include "archive/set_search.h"

#include "archive/long_work.h"
#include "archive/set_folder.h"
#include "screen_text/screen_text.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>

namespace archive {

namespace {

namespace fs = std::filesystem;
using screen_text::onScreen;

class Search {
public:
    void addArgument(const std::string& argument, bool recursive)
    {
        std::error_code error;
        if (const auto set = findSet(argument))
            add(*set);
        else if (!fs::is_directory(argument, error))
            found_.faults.push_back("there is no list file for " + onScreen(argument));
        else
            addFolder(argument, recursive);
    }

    FoundSets take() { return std::move(found_); }

private:
    void add(const SetFiles& set)
    {
        checkStop();
        offered_++;
        if (seen_.insert(pathOf(set)).second)
            found_.sets.push_back(set);
    }

    void addFolder(const std::string& folder, bool recursive)
    {
        const std::size_t before = offered_ + found_.faults.size();
        if (recursive)
            addTree(folder);
        else if (const auto sets = findSets(folder))
            addLists(*sets);
        if (offered_ + found_.faults.size() == before)
            found_.faults.push_back("there is no set in the folder " + onScreen(folder));
    }

    void addLists(const SetFolder& folder)
    {
        if (folder.readFailed)
            found_.faults.push_back(notRead(folder));
        std::error_code error;
        FolderNames names(fs::canonical(folder.path, error).string());
        for (const std::string& name : folder.lists) {
            if (const auto set = findSet(names, name))
                add(*set);
        }
    }

    // The folders that are still to be read are kept in a list, so that a deep tree can't exhaust the stack.
    void addTree(const std::string& root)
    {
        std::vector<std::string> waiting = {root};
        while (!waiting.empty()) {
            const std::string folder = std::move(waiting.back());
            waiting.pop_back();
            checkStop();
            addLists(listsIn(folder));
            std::vector<std::string> inner = foldersIn(folder);
            std::ranges::sort(inner, std::greater());
            waiting.insert(waiting.end(), inner.begin(), inner.end());
        }
    }

    static std::vector<std::string> foldersIn(const std::string& folder)
    {
        std::vector<std::string> inner;
        std::error_code error;
        for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
             entry.increment(error)) {
            std::error_code unknown;
            if (entry->is_directory(unknown) && !entry->is_symlink(unknown))
                inner.push_back(entry->path().string());
        }
        return inner;
    }

    FoundSets found_;
    std::size_t offered_ = 0;               // number of sets found so far; a set found twice counts twice
    std::unordered_set<std::string> seen_;  // paths of list files
};

}  // namespace

FoundSets searchSets(const std::vector<std::string>& where, bool recursive)
{
    Search search;
    for (const std::string& argument : where)
        search.addArgument(argument, recursive);
    return search.take();
}

FoundSets searchShownFolder(const std::string& folder, const std::u16string& shownAs)
{
    FoundSets found = searchSets({folder}, false);
    std::error_code error;
    const std::string real = fs::canonical(folder, error).string();
    std::erase_if(found.sets, [&](const SetFiles& set) { return set.folder != real; });
    for (SetFiles& set : found.sets)
        set.shownFolder = shownAs;
    return found;
}

std::string pathOf(const SetFiles& set)
{
    return (fs::path(set.folder) / set.listName).string();
}

}  // namespace archive
