#include "set_tree.h"

#include "archive/fault_text.h"
#include "archive/image_check.h"
#include "archive/item_target.h"
#include "text/host_name.h"

#include "ce/error.h"
#include "ce/file.h"

namespace quillbox_mount {

using namespace archive;
using database_formats::Format;

SetTree::SetTree(const OpenedSet& set)
{
    nodes_.emplace_back();
    const OpenFile data(set.mounted().dataPath, GENERIC_READ, OPEN_EXISTING);
    Item item;
    while (set.list().next(item))
        addItem(data, item);
    if (const std::string fault = set.list().missingItems(); !fault.empty())
        leftOut_ += fault + '\n';
    addNote("comment", platform::text::toUtf8(set.list().comment()));
    if (!leftOut_.empty())
        addNote("left-out", std::move(leftOut_));
}

std::optional<std::uint32_t> SetTree::child(std::uint32_t folder, std::string_view name) const
{
    const auto found = places_.find({folder, name});
    return found == places_.end() ? std::nullopt : std::optional(found->second);
}

// Adds an item. A database is shown in each format that can hold it. If its type can't be read, the database is damaged
// and is shown only as JSON lines.
void SetTree::addItem(const OpenFile& data, const Item& item)
{
    if (std::string fault = targetFault(item); !fault.empty()) {
        leftOut_ += item.text() + ": " + fault + '\n';
        return;
    }
    addItem(item, Format::JsonLines);
    const auto type = item.isDatabase() ? typeOfImage(data, item.entry) : std::nullopt;
    for (const Format format : {Format::VCard, Format::ICalendar, Format::Csv}) {
        if (type && holds(format, *type))
            addItem(item, format);
    }
}

void SetTree::addItem(const Item& item, Format format)
{
    Node file;
    file.kind = item.isFile() ? Node::Kind::File : Node::Kind::Text;
    file.itemKind = item.entry.kind;
    file.startOffset = item.entry.startOffset;
    file.endOffset = item.entry.endOffset;
    file.format = format;
    const auto names = hostNamesOf(targetOf(item, format));
    const std::string fault = names ? addPath(*names, std::move(file)) : errorText(ERROR_INVALID_NAME);
    if (!fault.empty())
        leftOut_ += item.text() + ": " + fault + '\n';
}

// Adds the file with the path `names`. Returns why the file can't be added, or an empty text.
std::string SetTree::addPath(const std::vector<std::string>& names, Node&& file)
{
    std::uint32_t folder = root;
    for (std::size_t at = 0; at + 1 < names.size(); at++) {
        const auto found = child(folder, names[at]);
        folder = found ? *found : add(folder, names[at], Node());
        if (nodes_[folder].kind != Node::Kind::Folder)
            return "a folder of its path is a file";
    }
    if (const auto found = child(folder, names.back()))
        return nodes_[*found].kind == Node::Kind::Folder ? "a folder has that name"
                                                         : "an earlier item has the same path";
    add(folder, names.back(), std::move(file));
    return "";
}

std::uint32_t SetTree::add(std::uint32_t folder, const std::string& name, Node&& node)
{
    const std::uint32_t index = size();
    Node& added = nodes_.emplace_back(std::move(node));
    added.name = name;
    added.parent = folder;
    nodes_[folder].children.push_back(index);
    places_.emplace(Place{folder, added.name}, index);
    return index;
}

// Adds a note. If an item already has the note's name, a number is added to the name of the note: "comment (2).txt".
void SetTree::addNote(const std::string& stem, std::string&& content)
{
    Node note;
    note.kind = Node::Kind::Note;
    note.content = std::move(content);
    std::string name = stem + ".txt";
    for (int number = 2; child(root, name); number++)
        name = stem + " (" + std::to_string(number) + ").txt";
    add(root, name, std::move(note));
}

}  // namespace quillbox_mount
