#include "archive/image_check.h"

#include "archive/fault_text.h"
#include "screen_text/screen_text.h"

#include "text/case_folding.h"

#include "ce/text.h"

#include <algorithm>
#include <array>
#include <deque>
#include <utility>

namespace archive {

using screen_text::counted;
using screen_text::onScreen;

namespace {

constexpr std::size_t pieceUnits = 2048;

// The properties of one record, and the texts and blobs that they point to.
class KeptRecord {
public:
    void clear()
    {
        properties_.clear();
        texts_.clear();
        blobs_.clear();
        text_.clear();
        blob_.clear();
    }
    void addToText(std::span<const char16_t> units) { text_.append(units.data(), units.size()); }
    void addToBlob(std::span<const std::byte> bytes) { blob_.insert(blob_.end(), bytes.begin(), bytes.end()); }

    // Adds the property. If its value is a text or a blob, the value consists of all pieces that were added since the
    // previous property.
    void add(CEPROPVAL property)
    {
        if (LOWORD(property.propid) == CEVT_LPWSTR)
            property.val.lpwstr = texts_.emplace_back(std::exchange(text_, {})).data();
        if (LOWORD(property.propid) == CEVT_BLOB) {
            auto& blob = blobs_.emplace_back(std::exchange(blob_, {}));
            property.val.blob = {static_cast<DWORD>(blob.size()), reinterpret_cast<BYTE*>(blob.data())};
        }
        properties_.push_back(property);
    }

    std::span<const CEPROPVAL> properties() const { return properties_; }

private:
    std::vector<CEPROPVAL> properties_;
    std::deque<std::u16string> texts_;
    std::deque<std::vector<std::byte>> blobs_;
    std::u16string text_;
    std::vector<std::byte> blob_;
};

class ImageCheck {
public:
    ImageCheck(UnpackedStream& stream, ImageReport& report, RecordSink* sink)
        : stream_(stream), report_(report), sink_(sink)
    {
    }

    bool takeHead()
    {
        DWORD nameBytes = 0;
        WORD sortCount = 0;
        if (!take(nameBytes))
            return false;
        if (nameBytes < sizeof(char16_t) || nameBytes > NameChars * sizeof(char16_t) || nameBytes % 2 != 0) {
            noteFault("its image has a name of " + counted(nameBytes, "byte"));
            return false;
        }
        report_.name.resize(nameBytes / sizeof(char16_t));
        if (stream_.read(std::as_writable_bytes(std::span(report_.name))) != nameBytes)
            return false;
        return endName() && take(report_.type) && take(report_.records) && take(sortCount) && takeSortOrders(sortCount);
    }

    void run()
    {
        if (!takeHead())
            return noteFault("its image ends before its first record");
        report_.ends.push_back(stream_.taken());
        if (sink_)
            sink_->head(report_);
        while (record_ < report_.records) {
            record_++;
            if (!takeRecord())
                return noteFault("its image ends inside record " + std::to_string(record_) + " of " +
                                 std::to_string(report_.records));
            report_.ends.push_back(stream_.taken());
            if (sink_ && content_ <= MaxRecordContent)
                sink_->record(record_, kept_.properties());
        }
        const std::uint64_t whole = stream_.taken();
        (void)stream_.finish();
        if (stream_.taken() != whole)
            noteFault(counted(stream_.taken() - whole, "byte") + " too many after the last of its image's " +
                      counted(report_.records, "record"));
    }

private:
    // Keeps only the first fault, because it is often the cause of the others.
    void noteFault(const std::string& fault)
    {
        if (report_.fault.empty())
            report_.fault = fault;
    }

    void noteFaultOfText(const std::string& fault)
    {
        noteFault("a text in record " + std::to_string(record_) + " " + fault);
    }

    template <class Value>
    bool take(Value& value)
    {
        return stream_.read(std::as_writable_bytes(std::span(&value, 1))) == sizeof value;
    }

    bool endName()
    {
        const bool closed = report_.name.back() == 0;
        const std::size_t end = std::min(report_.name.find(u'\0'), report_.name.size());
        if (!closed || end == 0)
            noteFault(closed ? "its image has an empty name" : "the name in its image has no closing NUL");
        else if (end + 1 != report_.name.size())
            noteFault("the name in its image has a NUL before its end");
        report_.name.resize(end);
        return closed && end != 0;
    }

    bool takeSortOrders(WORD count)
    {
        if (count > CEDB_MAXSORTORDER)
            noteFault("its image has " + std::to_string(count) + " sort orders, a database at most 4");
        for (; count > 0; count--) {
            SORTORDERSPEC order{};
            if (!take(order.propid) || !take(order.dwFlags))
                return false;
            if (report_.sortOrders.size() < CEDB_MAXSORTORDER)
                report_.sortOrders.push_back(order);
        }
        return true;
    }

    bool takeRecord()
    {
        WORD properties = 0;
        if (!take(properties))
            return false;
        report_.emptyRecords = static_cast<WORD>(report_.emptyRecords + (properties == 0 ? 1 : 0));
        content_ = 0;
        kept_.clear();
        for (; properties > 0; properties--) {
            CEPROPVAL property{};
            if (!take(property.propid) || !takeValue(property) || !take(property.wFlags))
                return false;
            if (sink_)
                kept_.add(property);
        }
        if (content_ > MaxRecordContent && report_.tooLarge == 0) {
            report_.tooLarge = record_;
            noteFault("record " + std::to_string(record_) +
                      " of its image has more than 16 MiB, which no restore accepts");
        }
        return true;
    }

    bool takeValue(CEPROPVAL& property)
    {
        DWORD bytes = 0;
        switch (LOWORD(property.propid)) {
        case CEVT_I2:
        case CEVT_UI2:
            return take(property.val.iVal);
        case CEVT_I4:
        case CEVT_UI4:
            return take(property.val.lVal);
        case CEVT_FILETIME:
            return take(property.val.filetime);
        case CEVT_BLOB:
            return take(bytes) && takeBlob(bytes);
        case CEVT_LPWSTR:
            return take(bytes) && takeText(bytes);
        default:
            return true;
        }
    }

    // True if there is a sink and the current record is small enough for it. `content_` already includes the announced
    // size of the value that is being read.
    bool isKept() const { return sink_ && content_ <= MaxRecordContent; }

    bool takeBlob(DWORD bytes)
    {
        content_ += bytes;
        if (!isKept())
            return stream_.skip(bytes);
        std::array<std::byte, pieceUnits> piece{};
        for (std::size_t left = bytes; left > 0;) {
            const auto part = std::span(piece).first(std::min(left, piece.size()));
            if (stream_.read(part) != part.size())
                return false;
            kept_.addToBlob(part);
            left -= part.size();
        }
        return true;
    }

    bool takeText(DWORD bytes)
    {
        content_ += std::max<DWORD>(bytes, sizeof(WCHAR)) - sizeof(WCHAR);
        if (bytes % sizeof(char16_t) != 0 || bytes == 0)
            noteFaultOfText("has a size of " + counted(bytes, "byte"));
        std::array<char16_t, pieceUnits> units{};
        for (std::size_t left = bytes / sizeof(char16_t); left > 0;) {
            const auto piece = std::span(units).first(std::min(left, units.size()));
            if (stream_.read(std::as_writable_bytes(piece)) != piece.size_bytes())
                return false;
            left -= piece.size();
            const bool closes = left == 0 && bytes % sizeof(char16_t) == 0;
            const auto text = closes ? piece.first(piece.size() - 1) : piece;
            if (closes && piece.back() != 0)
                noteFaultOfText("has no closing NUL");
            else if (std::ranges::find(text, u'\0') != text.end())
                noteFaultOfText("has a NUL before its end");
            if (isKept())
                kept_.addToText(piece);
        }
        return stream_.skip(bytes % sizeof(char16_t));
    }

    UnpackedStream& stream_;
    ImageReport& report_;
    unsigned record_ = 0;
    RecordSink* sink_;
    KeptRecord kept_;            // the current record, if there is a sink
    std::uint64_t content_ = 0;  // number of bytes in the texts and blobs of the record
};

}  // namespace

ImageReport checkImage(const OpenFile& data, const ListEntry& entry, RecordSink* sink)
{
    ImageReport report;
    UnpackedStream stream(data, entry);
    ImageCheck(stream, report, sink).run();
    // A damaged stream also makes the image incomplete. So the fault of the stream, which is the cause, replaces the
    // fault of the image.
    if (const StreamFault fault = stream.finish(); fault != StreamFault::None)
        report.fault = streamFaultText(fault);
    report.bytes = stream.taken();
    return report;
}

std::optional<DWORD> typeOfImage(const OpenFile& data, const ListEntry& entry)
{
    ImageReport report;
    UnpackedStream stream(data, entry);
    return ImageCheck(stream, report, nullptr).takeHead() ? std::optional(report.type) : std::nullopt;
}

std::vector<std::string> imageWarnings(const ImageReport& image, std::u16string_view itemName)
{
    std::vector<std::string> warnings;
    if (!image.hasHead())
        return warnings;
    if (platform::text::compareWithoutCase(image.name, itemName) != 0)
        warnings.push_back("its image is of a database named \"" + onScreen(image.name) +
                           "\": a restore makes that database, and asks before it replaces either");
    if (image.name.size() >= CEDB_MAXDBASENAMELEN)
        warnings.push_back("the name in its image has more than 31 characters: a device cuts it");
    if (image.emptyRecords != 0)
        warnings.push_back(
            counted(image.emptyRecords, "record") +
            " of its image without properties, which a restore leaves out: they were empty on the device, or "
            "the backup couldn't read them");
    return warnings;
}

}  // namespace archive
