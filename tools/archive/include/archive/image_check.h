// image_check.h - unpacks the image of a database and checks that the image complies with the format. The check has at
// most one record in memory at a time. It also stores the end offset of every record.
//
// A restore reads a damaged image as far as possible (image_reader.h). This check says what is wrong with the image.
#pragma once

#include "archive/unpacked_stream.h"

#include "ce/store.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace archive {

struct ImageReport {
    std::u16string name;  // of the database, from the head of the image
    DWORD type = 0;
    WORD records = 0;  // number of records, from the head
    std::vector<SORTORDERSPEC> sortOrders;

    // The offset in the image where the head ends, and then the offset where each complete record ends. The head is the
    // part before the first record. If it can't be read, there are no offsets.
    std::vector<std::uint64_t> ends;
    WORD emptyRecords = 0;
    unsigned tooLarge = 0;  // number of the first record that exceeds MaxRecordContent, from 1. 0: none.

    // The first fault of the image or of its stream. Empty for a sound image.
    std::string fault;
    std::uint64_t bytes = 0;  // size of the image, as far as it can be unpacked

    bool hasHead() const { return !ends.empty(); }
};

// Receives the content of an image while it is checked.
class RecordSink {
public:
    RecordSink() = default;
    RecordSink(const RecordSink&) = delete;
    RecordSink& operator=(const RecordSink&) = delete;
    virtual ~RecordSink() = default;

    // Called after the head was read. At this time the report has only the facts from the head.
    virtual void head(const ImageReport& /*image*/) {}
    // Receives a complete record with at most MaxRecordContent bytes of texts and blobs. The records come in the order
    // of the image, in which the last record of the database is number 1. The texts and blobs are valid only during the
    // call.
    virtual void record(unsigned /*number*/, std::span<const CEPROPVAL> /*properties*/) {}
};

// Reads the stream to its end, and returns what the image contains and its first fault. `sink` may be null.
ImageReport checkImage(const OpenFile& data, const ListEntry& entry, RecordSink* sink = nullptr);

// Returns the type of the database. Reads only the head of the image, which is at the beginning of the stream. Returns
// nothing if the head can't be read.
std::optional<DWORD> typeOfImage(const OpenFile& data, const ListEntry& entry);

// Returns warnings about facts that aren't faults, but can surprise a user who restores the item `itemName`.
std::vector<std::string> imageWarnings(const ImageReport& image, std::u16string_view itemName);

}  // namespace archive
