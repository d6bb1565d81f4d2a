// image_check.h - a database's image held to the format, record after record, as it is unpacked: nothing of it is kept
// but where its records lie.
//
// A restore reads a damaged image as far as it goes (image_reader.h); here it is told what is wrong with it.
#pragma once

#include "unpacked_stream.h"

#include "ce/store.h"

#include <string>
#include <vector>

namespace quillbox_set {

struct ImageReport {
    std::u16string name;  // the database's own
    DWORD type = 0;
    WORD records = 0;  // as its head tells
    std::vector<SORTORDERSPEC> sortOrders;

    // Where the head ends, and then each record that is there whole: offsets in the image.
    std::vector<std::uint64_t> ends;
    WORD emptyRecords = 0;
    unsigned tooLarge = 0;  // the first record that no restore takes (MaxRecordContent), from 1; 0: none

    // The first thing that is wrong, the stream included; empty for a sound image.
    std::string fault;
    std::uint64_t bytes = 0;  // of the image, as far as it unpacks

    [[nodiscard]] bool hasHead() const { return !ends.empty(); }
};

// Reads the stream to its end.
[[nodiscard]] ImageReport checkImage(const OpenFile& data, const ListEntry& entry);

// What is no fault but may surprise whoever restores the item of this name.
[[nodiscard]] std::vector<std::string> imageWarnings(const ImageReport& image, std::u16string_view itemName);

}  // namespace quillbox_set
