#include "set_listing.h"

#include "archive/listed_set.h"
#include "archive/set_files.h"
#include "exit_code.h"
#include "json_list.h"
#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include <filesystem>
#include <iostream>

namespace quillbox_set {

using namespace archive;

using screen_text::onScreen;

namespace {

std::u16string firstLine(std::u16string_view comment)
{
    return std::u16string(comment.substr(0, comment.find_first_of(u"\r\n")));
}

}  // namespace

int listSets(const SetFolder& folder, bool json)
{
    if (folder.lists.empty()) {
        std::cerr << "quillbox-set: " << noSetIn(folder) << "\n";
        return exitNoSet;
    }
    auto mounted = mountSet({folder.path, "", "", ""}, folder.path);
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
        const std::string path = (std::filesystem::path(folder.path) / name).string();
        mounted->listPath = mounted->folder + u"\\" + platform::text::toDeviceName(name);
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
            std::cout << onScreen(path) << "  " << onScreen(comment) << '\n';
    }
    if (list)
        list->end({{"count", folder.lists.size()}});
    return code;
}

}  // namespace quillbox_set
