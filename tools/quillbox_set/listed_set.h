// listed_set.h - a set as its list tells it, item after item; memory doesn't grow with it.
#pragma once

#include "set/list_reader.h"
#include "set_files.h"

#include <memory>
#include <string>

namespace quillbox_set {

struct Item {
    std::uint64_t number;  // from 1
    ListEntry entry;

    [[nodiscard]] std::u16string_view name() const { return entry.blob.name; }
    // How it is shown and asked for: its name; "registry" for the registry, whose own means nothing.
    [[nodiscard]] std::u16string_view shownName() const { return isRegistry() ? u"registry" : name(); }
    [[nodiscard]] bool isFile() const { return entry.kind == ItemKindFile; }
    [[nodiscard]] bool isDatabase() const { return entry.kind == ItemKindDatabase; }
    [[nodiscard]] bool isRegistry() const { return entry.kind == ItemKindRegistry; }

    // "file", "database", "registry", or "kind 7".
    [[nodiscard]] std::string kindText() const;

    // "file \a", "database Tasks", "registry", fit for the screen.
    [[nodiscard]] std::string text() const;

    // Of the stream, as the offsets tell; 0 if they make no sense.
    [[nodiscard]] DWORD packedBytes() const;
};

class ListedSet {
public:
    explicit ListedSet(const MountedSet& set);

    [[nodiscard]] bool isOpen() const { return list_.isOpen(); }
    [[nodiscard]] std::u16string_view comment() const { return comment_; }
    [[nodiscard]] DWORD commentFaults() const { return commentFaults_; }

    // False at the end.
    bool next(Item& item);

    // Known at the end only.
    [[nodiscard]] DWORD bytesBehindItems() const { return reader_->bytesBehindEntries; }
    [[nodiscard]] bool readFailed() const { return reader_->readError != ERROR_SUCCESS; }

private:
    OpenFile list_;
    std::unique_ptr<ListReader> reader_;
    WCHAR comment_[CommentChars] = {};
    DWORD commentFaults_ = 0;
    std::uint64_t items_ = 0;
};

}  // namespace quillbox_set
