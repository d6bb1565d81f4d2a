// stream_scan.h - finds compressed streams in a file without a list (docs/format.md, "Compressed stream"), in a data
// file that is damaged, cut or joined from several.
//
// The memory doesn't depend on the file. The time grows in proportion to the size of the file, whatever is in it.
#pragma once

#include "archive/set_files.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace archive {

// A stream, or a piece of one whose beginning is lost.
struct FoundStream {
    std::uint64_t start = 0;  // offset in the file
    std::uint64_t end = 0;    // the offset after its last byte, as far as it could be followed
    std::uint64_t rawBytes = 0;
    // The raw bytes before the first damage, as far as it can be told. What else a damaged block gave is after them.
    std::uint64_t soundBytes = 0;
    unsigned damagedBlocks = 0;  // those that can't be unpacked, or that the host couldn't read
    bool hasMagic = false;       // false: a piece that begins with some block
    bool isClosed = false;       // it has its closing block
    bool isReadable = true;      // the host could read all of its bytes
    bool isProven = false;       // no sector of it can have been replaced (stream_proof.h)

    // All blocks from the magic to the closing block could be read and unpacked.
    bool isWhole() const { return hasMagic && isClosed && isReadable && damagedBlocks == 0; }
};

class ScanSink {
public:
    ScanSink() = default;
    ScanSink(const ScanSink&) = delete;
    ScanSink& operator=(const ScanSink&) = delete;
    virtual ~ScanSink() = default;

    // A stream of which at least one block, or a part of one, can be unpacked.
    virtual void begin(const FoundStream& stream) = 0;
    // Its next raw bytes. What is missing of a damaged block in the middle is 0. `stream` already counts these bytes,
    // and the damaged block if they aren't sound.
    virtual void bytes(const FoundStream& stream, std::span<const std::byte> raw) = 0;
    virtual void end(const FoundStream& stream) = 0;
};

struct ScanTotals {
    std::uint64_t fileBytes = 0;
    std::uint64_t unreadable = 0;   // bytes that the host couldn't read
    std::uint64_t unclaimed = 0;    // bytes that belong to no stream
    std::uint64_t lostStreams = 0;  // streams that begin but have nothing that can be unpacked
    bool gaveUp = false;  // parts weren't searched, because too many bytes looked like a block but weren't one
};

enum class Proving { Wanted, NotNeeded };

// Reads the file to its end. With NotNeeded every stream counts as proven.
ScanTotals scanStreams(const OpenFile& file, Proving proving, ScanSink& sink);

}  // namespace archive
