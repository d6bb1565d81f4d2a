// scan_streams.cpp - searches any bytes for streams. The scan and the decoder of streams must agree on whether each
// found stream is complete.

#include "archive/stream_scan.h"
#include "require.h"
#include "set/stream_decoding.h"
#include "temporary_root.h"

#include <vector>

namespace {

class Found final : public archive::ScanSink {
public:
    void begin(const archive::FoundStream& stream) override
    {
        require(!isOpen_ && stream.start >= nextStart_);
        isOpen_ = true;
        bytes_ = 0;
    }

    void bytes(const archive::FoundStream& stream, std::span<const std::byte> raw) override
    {
        bytes_ += raw.size();
        require(isOpen_ && !raw.empty() && stream.rawBytes == bytes_ && stream.soundBytes <= bytes_);
    }

    void end(const archive::FoundStream& stream) override
    {
        require(isOpen_ && stream.rawBytes == bytes_ && stream.end >= stream.start);
        require(stream.isWhole() ? stream.soundBytes == bytes_ : !stream.isProven);
        isOpen_ = false;
        nextStart_ = stream.start + 1;
        streams.push_back(stream);
    }

    std::vector<archive::FoundStream> streams;

private:
    bool isOpen_ = false;
    std::uint64_t bytes_ = 0;
    std::uint64_t nextStart_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const TemporaryRoot root;
    TemporaryRoot::write(u"\\data", data, size);
    const archive::OpenFile file(u"\\data", GENERIC_READ, OPEN_EXISTING);
    Found found;
    const archive::ScanTotals totals = scanStreams(file, archive::Proving::Wanted, found);
    require(totals.fileBytes == size && totals.unclaimed <= size);

    for (const archive::FoundStream& stream : found.streams) {
        require(stream.end <= size);
        const StreamFault fault = DecodeStream(file.handle(), static_cast<DWORD>(stream.start),
                                               static_cast<DWORD>(stream.end), nullptr, nullptr);
        require((fault == StreamFault::None) == stream.isWhole());
    }
    const bool isStream =
        DecodeStream(file.handle(), 0, static_cast<DWORD>(size), nullptr, nullptr) == StreamFault::None;
    require(!isStream || (found.streams.size() == 1 && found.streams[0].isWhole()));
    return 0;
}
