#include "image_check.h"

#include "fault_text.h"
#include "screen_text/screen_text.h"

#include "text/case_folding.h"

#include "ce/text.h"

#include <algorithm>
#include <array>

namespace quillbox_set {

using screen_text::counted;
using screen_text::onScreen;

namespace {

constexpr std::size_t pieceUnits = 2048;

class ImageCheck {
public:
    ImageCheck(UnpackedStream& stream, ImageReport& report) : stream_(stream), report_(report) {}

    void run()
    {
        if (!takeHead())
            return noteFault("its image ends before its first record");
        report_.ends.push_back(stream_.taken());
        while (record_ < report_.records) {
            record_++;
            if (!takeRecord())
                return noteFault("its image ends inside record " + std::to_string(record_) + " of " +
                                 std::to_string(report_.records));
            report_.ends.push_back(stream_.taken());
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
        for (; properties > 0; properties--) {
            CEPROPID id = 0;
            if (!take(id) || !takeValue(LOWORD(id)) || !stream_.skip(sizeof(WORD)))
                return false;
        }
        if (content_ > MaxRecordContent && report_.tooLarge == 0) {
            report_.tooLarge = record_;
            noteFault("record " + std::to_string(record_) +
                      " of its image has more than 16 MiB, which no restore accepts");
        }
        return true;
    }

    bool takeValue(WORD type)
    {
        DWORD bytes = 0;
        switch (type) {
        case CEVT_I2:
        case CEVT_UI2:
            return stream_.skip(sizeof(SHORT));
        case CEVT_I4:
        case CEVT_UI4:
            return stream_.skip(sizeof(LONG));
        case CEVT_FILETIME:
            return stream_.skip(sizeof(FILETIME));
        case CEVT_BLOB:
        case CEVT_LPWSTR:
            return take(bytes) && takeSizedValue(type, bytes);
        default:
            return true;
        }
    }

    bool takeSizedValue(WORD type, DWORD bytes)
    {
        const bool isText = type == CEVT_LPWSTR;
        content_ += isText ? std::max<DWORD>(bytes, sizeof(WCHAR)) - sizeof(WCHAR) : bytes;
        return isText ? takeText(bytes) : stream_.skip(bytes);
    }

    bool takeText(DWORD bytes)
    {
        if (bytes % sizeof(char16_t) != 0 || bytes == 0) {
            noteFaultOfText("has a size of " + counted(bytes, "byte"));
            return stream_.skip(bytes);
        }
        std::array<char16_t, pieceUnits> units{};
        for (std::size_t left = bytes / sizeof(char16_t); left > 0;) {
            const auto piece = std::span(units).first(std::min(left, units.size()));
            if (stream_.read(std::as_writable_bytes(piece)) != piece.size_bytes())
                return false;
            left -= piece.size();
            const auto text = left == 0 ? piece.first(piece.size() - 1) : piece;
            if (left == 0 && piece.back() != 0)
                noteFaultOfText("has no closing NUL");
            else if (std::ranges::find(text, u'\0') != text.end())
                noteFaultOfText("has a NUL before its end");
        }
        return true;
    }

    UnpackedStream& stream_;
    ImageReport& report_;
    unsigned record_ = 0;
    std::uint64_t content_ = 0;  // number of bytes in the texts and blobs of the record
};

}  // namespace

ImageReport checkImage(const OpenFile& data, const ListEntry& entry)
{
    ImageReport report;
    UnpackedStream stream(data, entry);
    ImageCheck(stream, report).run();
    // A damaged stream also makes the image incomplete. The fault of the stream is the cause, so it counts.
    if (const StreamFault fault = stream.finish(); fault != StreamFault::None)
        report.fault = streamFaultText(fault);
    report.bytes = stream.taken();
    return report;
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

}  // namespace quillbox_set
