// new_set.h - writes a new set from streams of an old data file.
#pragma once

#include "archive/growing_file.h"
#include "archive/listed_set.h"
#include "archive/name_set.h"
#include "archive/set_files.h"

#include <cstdint>
#include <string>
#include <vector>

namespace quillbox_set {

class NewSet {
public:
    // Adds an item whose whole stream can be unpacked. The stream has the bytes from `start` up to, but not including,
    // `end` in the data file. If the item would make the set faulty, returns the reason and doesn't add it. For
    // example, the name may be in use already. Otherwise returns an empty text.
    std::string add(BYTE kind, const std::u16string& name, std::uint64_t start, std::uint64_t end);

    std::uint64_t items() const { return entries_.size(); }
    // The names of the items that write() couldn't read from the old data file. The new set doesn't have these items.
    const std::vector<std::u16string>& unreadable() const { return unreadable_; }

    // Writes the set with its items in the order of their kinds. Neither the list file nor the data file may exist.
    // Returns an empty text, or the reason of a failure. After a failure there are no new files.
    std::string write(const archive::OpenFile& data, const archive::MountedSet& target, const std::u16string& comment);

private:
    struct Entry {
        BYTE kind;
        std::u16string name;
        std::uint64_t start;
        DWORD bytes;
    };

    void writeStreams(const archive::OpenFile& data, archive::GrowingFile& streams);
    std::string writeList(HANDLE list, const std::u16string& comment) const;

    std::vector<Entry> entries_;
    std::vector<std::u16string> unreadable_;
    std::uint64_t bytes_ = 0;  // of all streams
    bool hasRegistry_ = false;
    archive::NameSet names_;
};

}  // namespace quillbox_set
