#include "archive/item_text.h"

#include "archive/fault_text.h"
#include "archive/item_content.h"
#include "archive/long_work.h"
#include "archive/record_content.h"
#include "unpacked_image.h"

#include <ostream>

namespace archive {

namespace {

// Records are read from the last one to the first one, in groups of about this size, so that few seeks are needed.
constexpr std::uint64_t groupBytes = std::uint64_t{256} * 1024;

// Returns an error text if the image has a record that is too large, otherwise an empty text. Such records are refused
// because the conversion to text needs several copies of a record in memory.
std::string tooLargeRecord(const ImageReport& image)
{
    return image.tooLarge == 0 ? ""
                               : "record " + std::to_string(image.tooLarge) +
                                     " of its image has more than 16 MiB; --raw extracts the database";
}

// Returns the index of the first record of a group. The group ends before the record with the index `end`. It has as
// many records as fit into groupBytes, but at least one.
std::size_t groupBefore(const ImageReport& image, std::size_t end)
{
    std::size_t first = end - 1;
    while (first > 0 && image.ends[end] - image.ends[first - 1] <= groupBytes)
        first--;
    return first;
}

void addBackwards(database_formats::DatabaseWriter& writer, const ImageRecords& records)
{
    for (std::size_t end = records.size(); end > 0; end--) {
        const std::vector<CEPROPVAL> record = restoredRecord(records.record(end - 1));
        if (!record.empty())
            writer.add(record);
    }
}

class ToStream final : public ContentSink {
public:
    explicit ToStream(std::ostream& out) : out_(out) {}

    bool bytes(std::span<const std::byte> piece) override
    {
        out_.write(reinterpret_cast<const char*>(piece.data()), static_cast<std::streamsize>(piece.size()));
        return out_.good();
    }

private:
    std::ostream& out_;
};

}  // namespace

std::string writeDatabase(const OpenFile& data, const ListEntry& entry, const ImageReport& image,
                          database_formats::Format format, std::ostream& out, database_formats::LeftOut& leftOut)
{
    if (std::string fault = tooLargeRecord(image); !fault.empty())
        return fault;
    UnpackedImage unpacked(data, entry, image);
    if (unpacked.error() != ERROR_SUCCESS)
        return errorText(unpacked.error());
    try {
        const auto writer = database_formats::makeWriter(format, out, leftOut);
        writer->begin({image.name, image.type, image.sortOrders});
        for (std::size_t end = image.ends.size() - 1; end > 0 && out.good();) {
            checkStop();
            const std::size_t first = groupBefore(image, end);
            ImageRecords records;
            if (!unpacked.read(first, end, records))
                return "its image can't be read again";
            addBackwards(*writer, records);
            end = first;
        }
        writer->finish();
    } catch (const database_formats::FormatFault& fault) {
        return fault.what();
    }
    out.flush();
    return "";
}

std::string writeItemText(const OpenFile& data, Item item, std::optional<database_formats::Format> format,
                          std::ostream& out, database_formats::LeftOut& leftOut)
{
    ToStream sink(out);
    if (format && item.isDatabase()) {
        const ContentReport content = readContent(data, item, sink);
        const std::string failure = content.image.hasHead()
                                        ? writeDatabase(data, item.entry, content.image, *format, out, leftOut)
                                        : std::string();
        return content.fault.empty() ? failure : content.fault;
    }
    std::string damage;
    if (format && item.isRegistry())
        damage = readContent(data, item, sink).fault;
    item.entry.kind = ItemKindFile;  // so the bytes are written as they are
    const std::string fault = readContent(data, item, sink).fault;
    return fault.empty() ? damage : fault;
}

}  // namespace archive
