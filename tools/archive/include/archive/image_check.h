// image_check.h - checks that the image of a database complies with the format, while it is unpacked. Only the offsets
// of its records are kept.
//
// A restore reads a damaged image as far as possible (image_reader.h). This check names what is wrong with it.
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

    // The offset in the image where the head ends, and then the offset where each complete record ends.
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

    // The head has been read. The report has no records yet.
    virtual void head(const ImageReport& /*image*/) {}
    // A complete record of at most MaxRecordContent, the last one of the database first. `number` is from 1. Its texts
    // and blobs are valid only during the call.
    virtual void record(unsigned /*number*/, std::span<const CEPROPVAL> /*properties*/) {}
};

// Reads the stream to its end. `sink` may be null.
ImageReport checkImage(const OpenFile& data, const ListEntry& entry, RecordSink* sink = nullptr);

// The type of the database, from the first block of the stream. Nothing if the head can't be read.
std::optional<DWORD> typeOfImage(const OpenFile& data, const ListEntry& entry);

// What isn't a fault, but can surprise a user who restores the item of this name.
std::vector<std::string> imageWarnings(const ImageReport& image, std::u16string_view itemName);

}  // namespace archive
