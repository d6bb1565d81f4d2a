#include "set_listing.h"

#include "archive/fault_text.h"
#include "archive/listed_set.h"
#include "archive/set_files.h"
#include "exit_code.h"
#include "json_list.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include "ce/file.h"

#include <filesystem>
#include <iostream>
#include <optional>

namespace quillbox_set {

using namespace archive;

using screen_text::counted;
using screen_text::onScreen;

namespace {

std::u16string firstLine(std::u16string_view comment)
{
    return std::u16string(comment.substr(0, comment.find_first_of(u"\r\n")));
}

// What is printed about a set.
struct SetRow {
    std::u16string comment;
    std::uint64_t items = 0;
    std::optional<std::uint64_t> dataBytes;  // nothing if the data file can't be opened
    std::string dataFault;
    std::string listFault;
};

// Returns nothing if the list file can't be opened, and prints the reason on standard error.
std::optional<SetRow> rowOf(MountedSet mounted, FolderNames& names, const std::string& name)
{
    const auto files = findSet(names, name);
    mounted.listPath = mounted.folder + u"\\" + platform::text::toDeviceName(name);
    ListedSet set(mounted);
    if (!set.isOpen()) {
        std::cerr << "quillbox-set: " << notOpened("the list file", set.openError()) << ": "
                  << onScreen((std::filesystem::path(names.folder()) / name).string()) << "\n";
        return std::nullopt;
    }
    SetRow row;
    for (Item item; set.next(item);)
        ++row.items;
    row.listFault = set.missingItems();
    row.comment = firstLine(set.comment());
    const std::string dataName = files ? files->dataName : std::string();
    const OpenFile data(mounted.folder + u"\\" + platform::text::toDeviceName(dataName), GENERIC_READ, OPEN_EXISTING);
    if (data.isOpen())
        row.dataBytes = data.size();
    else
        row.dataFault = notOpened("the data file", data.error());
    return row;
}

nlohmann::ordered_json jsonOf(const std::string& path, const SetRow& row)
{
    nlohmann::ordered_json json = {{"list", jsonText(path)},
                                   {"comment", platform::text::toUtf8(row.comment)},
                                   {"itemCount", row.items},
                                   {"dataBytes", row.dataBytes ? nlohmann::ordered_json(*row.dataBytes) : nullptr}};
    if (!row.listFault.empty())
        json["fault"] = row.listFault;
    return json;
}

std::string textOf(const SetRow& row)
{
    return onScreen(row.comment) + (row.comment.empty() ? "" : "; ") + counted(row.items, "item") + ", " +
           (row.dataBytes ? counted(*row.dataBytes, "byte") : row.dataFault) +
           (row.listFault.empty() ? "" : "; " + row.listFault);
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
        std::cerr << "quillbox-set: " << notRead(folder) << "\n";
    FolderNames names(folder.path);
    std::uint64_t sets = 0;
    for (const std::string& name : folder.lists) {
        const std::string path = (std::filesystem::path(folder.path) / name).string();
        const auto row = rowOf(*mounted, names, name);
        if (!row) {
            code = exitFaults;
            continue;
        }
        sets++;
        if (!row->dataBytes || !row->listFault.empty())
            code = exitFaults;
        if (list)
            list->add(jsonOf(path, *row));
        else
            std::cout << onScreen(path) << "  " << textOf(*row) << '\n';
    }
    if (list)
        list->end({{"setCount", sets}});
    return code;
}

}  // namespace quillbox_set
