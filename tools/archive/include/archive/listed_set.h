// listed_set.h - reads the list of a set item by item, so the memory doesn't grow with the number of items.
#pragma once

#include "archive/set_files.h"
#include "set/list_reader.h"

#include <memory>
#include <string>

namespace archive {

struct Item {
    std::uint64_t number;  // from 1
    ListEntry entry;

    std::u16string_view name() const { return entry.blob.name; }
    // The name that is shown, and that the user can ask for. It is "registry" for the registry, whose entry has no
    // meaningful name.
    std::u16string_view shownName() const { return isRegistry() ? u"registry" : name(); }
    bool isFile() const { return entry.kind == ItemKindFile; }
    bool isDatabase() const { return entry.kind == ItemKindDatabase; }
    bool isRegistry() const { return entry.kind == ItemKindRegistry; }

    // "file", "database", "registry", or "kind 7".
    std::string kindText() const;

    // For the screen: "file \a", "database Tasks", "registry".
    std::string text() const;

    // The size of the stream, computed from the offsets. 0 if they are invalid.
    DWORD packedBytes() const;
};

// The name of an item, or a pattern, as the user typed it. A slash counts as a backslash, because it is easier to type
// in a shell, and no name contains a slash.
std::u16string nameFromUser(const std::string& typed);

class ListedSet {
public:
    explicit ListedSet(const MountedSet& set);

    bool isOpen() const { return list_.isOpen(); }
    DWORD openError() const { return list_.error(); }
    std::u16string_view comment() const { return comment_; }
    DWORD commentFaults() const { return commentFaults_; }

    // Reads the next item. False at the end.
    [[nodiscard]] bool next(Item& item);

    // Reads the next item whose name has these characters in it, or that is the registry. It may also return others.
    // Names are compared in the buffer of the list, so that a search through many sets is fast.
    [[nodiscard]] bool nextWith(std::u16string_view part, Item& item);

    // Valid only at the end.
    DWORD bytesAfterItems() const { return reader_->bytesAfterEntries; }
    [[nodiscard]] bool readFailed() const { return reader_->readError != ERROR_SUCCESS; }

private:
    OpenFile list_;
    std::unique_ptr<ListReader> reader_;
    WCHAR comment_[CommentChars] = {};
    DWORD commentFaults_ = 0;
    std::uint64_t items_ = 0;
};

}  // namespace archive
