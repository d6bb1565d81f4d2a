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
    // The name that is shown to the user, and that the user can type. For the registry it is "registry", because its
    // entry has no meaningful name.
    std::u16string_view shownName() const { return isRegistry() ? u"registry" : name(); }
    bool isFile() const { return entry.kind == ItemKindFile; }
    bool isDatabase() const { return entry.kind == ItemKindDatabase; }
    bool isRegistry() const { return entry.kind == ItemKindRegistry; }

    // Returns "file", "database", "registry", or a text such as "kind 7".
    std::string kindText() const;

    // Returns a text for the screen, such as "file \a", "database Tasks" or "registry".
    std::string text() const;

    // Returns the size of the stream, computed from the offsets. Returns 0 if the offsets are invalid.
    DWORD packedBytes() const;
};

// Converts the name of an item, or a pattern, from the text that the user typed. A slash becomes a backslash: a slash
// is easier to type in a shell, and no name contains a slash.
std::u16string nameFromUser(const std::string& typed);

class ListedSet {
public:
    explicit ListedSet(const MountedSet& set);

    bool isOpen() const { return list_.isOpen(); }
    DWORD openError() const { return list_.error(); }
    std::u16string_view comment() const { return comment_; }
    DWORD commentFaults() const { return commentFaults_; }

    // Reads the next item. Returns false at the end of the list.
    [[nodiscard]] bool next(Item& item);

    // Like next(), but may first skip items that are in the buffer already and whose names don't contain `part`. This
    // makes a search in many sets fast, because the call searches the buffer for `part` without reading each entry. It
    // never skips an item with `part` in its name, nor the registry. The name of the item that it returns needn't
    // contain `part`, so the caller must check the name.
    [[nodiscard]] bool nextWith(std::u16string_view part, Item& item);

    // These functions are valid only after next() or nextWith() has returned false.
    DWORD bytesAfterItems() const { return reader_->bytesAfterEntries; }
    // Whether the backup of the set still runs, or was interrupted, for example by a power failure.
    [[nodiscard]] bool isUnfinished() const { return reader_->bytesAfterEntries == 1; }
    [[nodiscard]] bool readFailed() const { return reader_->readError != ERROR_SUCCESS; }
    // Returns a sentence if the set may have more items than next() has returned, and otherwise "". A list file that
    // was cut exactly between two entries can't be told from a whole one.
    [[nodiscard]] std::string missingItems() const;

private:
    OpenFile list_;
    std::unique_ptr<ListReader> reader_;
    WCHAR comment_[CommentChars] = {};
    DWORD commentFaults_ = 0;
    DWORD itemFaults_ = 0;  // of all items that next() has returned
    std::uint64_t items_ = 0;
};

}  // namespace archive
