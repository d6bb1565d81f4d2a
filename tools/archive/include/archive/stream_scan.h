// stream_scan.h - finds compressed streams in a data file without using its list (docs/format.md, "Compressed stream").
// The file may be damaged, cut or joined from several.
//
// The use of memory doesn't depend on the file. The time grows at most in proportion to the size of the file, whatever
// its content.
#pragma once

#include "archive/set_files.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace archive {

// A stream, or the rest of a stream whose beginning is lost.
struct FoundStream {
    std::uint64_t start = 0;  // offset in the file
    std::uint64_t end = 0;    // the offset after the last byte that belongs to the stream
    std::uint64_t rawBytes = 0;
    // The number of raw bytes before the first damage, as far as it can be determined. A damaged block can yield
    // further raw bytes. They come after the sound bytes and may be wrong.
    std::uint64_t soundBytes = 0;
    unsigned damagedBlocks = 0;  // blocks that can't be unpacked, or that the host (the Linux system) couldn't read
    bool hasMagic = false;       // false: the beginning is lost, and this is the rest from some block on
    bool isClosed = false;       // it has its closing block
    bool isReadable = true;      // the host could read all of its bytes
    bool isProven = false;       // the stream is whole, and no sector can have been replaced (stream_proof.h)

    // All blocks from the magic to the closing block could be read and unpacked.
    bool isWhole() const { return hasMagic && isClosed && isReadable && damagedBlocks == 0; }
};

class ScanSink {
public:
    ScanSink() = default;
    ScanSink(const ScanSink&) = delete;
    ScanSink& operator=(const ScanSink&) = delete;
    virtual ~ScanSink() = default;

    // Announces a stream. At least one block of the stream, or a part of one, can be unpacked.
    virtual void begin(const FoundStream& stream) = 0;
    // Receives the next raw bytes of the stream. If a damaged block yields too few bytes and a valid data block follows
    // it, zeros are passed for the missing bytes. `stream.rawBytes` already counts the bytes in `raw`. If `raw` comes
    // before the first damage, `stream.soundBytes` counts its bytes too, and `stream.damagedBlocks` is 0. Otherwise
    // `stream.damagedBlocks` isn't 0.
    virtual void bytes(const FoundStream& stream, std::span<const std::byte> raw) = 0;
    virtual void end(const FoundStream& stream) = 0;
};

struct ScanTotals {
    std::uint64_t fileBytes = 0;
    std::uint64_t unreadable = 0;   // bytes that the host couldn't read
    std::uint64_t unclaimed = 0;    // bytes that belong to no stream
    std::uint64_t lostStreams = 0;  // streams whose beginning was found, but of which nothing can be unpacked
    bool gaveUp = false;  // parts weren't searched, because too many bytes looked like a block but weren't one
};

enum class Proving { Wanted, NotNeeded };

// Reads the file to its end. With NotNeeded every whole stream counts as proven.
ScanTotals scanStreams(const OpenFile& file, Proving proving, ScanSink& sink);

}  // namespace archive
