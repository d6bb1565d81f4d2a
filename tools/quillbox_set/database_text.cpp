#include "database_text.h"

#include "archive/fault_text.h"
#include "archive/long_work.h"
#include "archive/record_content.h"
#include "screen_text/screen_text.h"
#include "target_stream.h"
#include "unpacked_image.h"

#include <iostream>

namespace quillbox_set {

using namespace archive;
using screen_text::onScreen;

namespace {

// Records are read from the last one to the first one, in groups of about this size, so that few seeks are needed.
constexpr std::uint64_t groupBytes = std::uint64_t{256} * 1024;

// The conversion to text needs several copies of a record in memory, so a record that is too large is refused.
std::string tooLargeRecord(const ImageReport& image)
{
    return image.tooLarge == 0 ? ""
                               : "record " + std::to_string(image.tooLarge) +
                                     " of its image has more than 16 MiB; --raw extracts the database";
}

// The first record of the group that ends before the record `end`.
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

}  // namespace

std::string writeDatabase(const OpenFile& data, const ListEntry& entry, const ImageReport& image,
                          database_formats::Format format, std::ostream& out)
{
    if (std::string fault = tooLargeRecord(image); !fault.empty())
        return fault;
    UnpackedImage unpacked(data, entry, image);
    if (unpacked.error() != ERROR_SUCCESS)
        return errorText(unpacked.error());
    try {
        database_formats::LeftOut leftOut;
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
        if (leftOut.count() != 0)
            std::cerr << "quillbox-set: " << onScreen(image.name) << ": " << leftOut.sentence() << ".\n";
    } catch (const database_formats::FormatFault& fault) {
        return fault.what();
    }
    out.flush();
    return "";
}

std::string writeDatabaseText(const OpenFile& data, const ListEntry& entry, const ImageReport& image,
                              const DatabaseText& text, std::optional<std::uint64_t>& bytes)
{
    GrowingFile file(text.path);
    TargetBuffer buffer(file);
    std::ostream out(&buffer);
    if (std::string fault = writeDatabase(data, entry, image, text.format, out); !fault.empty())
        return fault;
    if (file.moveToTarget(text.replace) != ERROR_SUCCESS)
        return errorText(file.error());
    bytes = file.bytes();
    return "";
}

}  // namespace quillbox_set
