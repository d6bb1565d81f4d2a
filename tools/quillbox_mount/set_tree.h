// set_tree.h - the folders and files that show one set. The tree is made from the set's list and contains no content of
// items.
#pragma once

#include "archive/opened_set.h"

#include "database_formats/database_format.h"

#include "ce/types.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quillbox_mount {

struct Node {
    enum class Kind {
        Folder,
        File,  // an item whose stream has the bytes of the file
        Text,  // a database or the registry, shown as text
        Note,  // a file about the whole set, such as its comment
    };

    Kind kind = Kind::Folder;
    BYTE itemKind = 0;  // of an item. The two offsets are where its stream begins and ends.
    DWORD startOffset = 0;
    DWORD endOffset = 0;
    database_formats::Format format = database_formats::Format::JsonLines;  // of a Text
    std::string content = {};                                               // of a Note
    std::string name = {};                                                  // on the host
    std::uint32_t parent = 0;
    std::vector<std::uint32_t> children = {};  // of a folder
};

class SetTree {
public:
    // Reads the list of the set to its end. Items that can't be shown are named in the note left-out.txt.
    explicit SetTree(const archive::OpenedSet& set);

    static constexpr std::uint32_t root = 0;

    std::uint32_t size() const { return static_cast<std::uint32_t>(nodes_.size()); }
    const Node& node(std::uint32_t index) const { return nodes_[index]; }
    std::optional<std::uint32_t> child(std::uint32_t folder, std::string_view name) const;

private:
    struct Place {
        std::uint32_t folder;
        std::string_view name;
        bool operator==(const Place&) const = default;
    };
    struct HashPlace {
        std::size_t operator()(const Place& place) const noexcept
        {
            return std::hash<std::string_view>{}(place.name) ^ (place.folder * std::size_t{0x9E3779B97F4A7C15});
        }
    };

    void addItem(const archive::OpenFile& data, const archive::Item& item);
    void addItem(const archive::Item& item, database_formats::Format format);
    std::string addPath(const std::vector<std::string>& names, Node&& file);
    std::uint32_t add(std::uint32_t folder, const std::string& name, Node&& node);
    void addNote(const std::string& stem, std::string&& content);

    std::deque<Node> nodes_;  // a deque, so that the addresses of nodes don't change
    std::unordered_map<Place, std::uint32_t, HashPlace> places_;  // the names in a Place are views of the nodes' names
    std::string leftOut_;
};

}  // namespace quillbox_mount
