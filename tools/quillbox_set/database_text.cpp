#include "database_text.h"

#include "fault_text.h"
#include "target_stream.h"
#include "unpacked_image.h"

#include <ostream>
#include <unordered_map>

namespace quillbox_set {

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

// The properties that the store of a device contains after a restore has written this record.
std::vector<CEPROPVAL> restored(std::span<const CEPROPVAL> record)
{
    std::vector<CEPROPVAL> kept;
    std::unordered_map<CEPROPID, std::size_t> positions;  // in `kept`
    for (const CEPROPVAL& property : record) {
        const auto [position, isNew] = positions.emplace(property.propid, kept.size());
        if (isNew)
            kept.push_back(property);
        else
            kept[position->second] = property;
    }
    std::erase_if(kept, [](const CEPROPVAL& property) { return (property.wFlags & CEDB_PROPDELETE) != 0; });
    for (CEPROPVAL& property : kept)
        property.wFlags = static_cast<WORD>(property.wFlags & ~CEDB_PROPNOTFOUND);
    return kept;
}

void addBackwards(database_formats::DatabaseWriter& writer, const ImageRecords& records)
{
    for (std::size_t end = records.size(); end > 0; end--) {
        const std::vector<CEPROPVAL> record = restored(records.record(end - 1));
        if (!record.empty())
            writer.add(record);
    }
}

// Returns the reason of a failure, or an empty text.
std::string write(UnpackedImage& unpacked, const ImageReport& image, database_formats::Format format, GrowingFile& file)
{
    TargetBuffer buffer(file);
    std::ostream out(&buffer);
    try {
        const auto writer = database_formats::makeWriter(format, out);
        writer->begin({image.name, image.type, image.sortOrders});
        for (std::size_t end = image.ends.size() - 1; end > 0 && out.good();) {
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
    return file.error() == ERROR_SUCCESS ? "" : errorText(file.error());
}

}  // namespace

std::string writeDatabaseText(const OpenFile& data, const ListEntry& entry, const ImageReport& image,
                              const DatabaseText& text, std::optional<std::uint64_t>& bytes)
{
    if (std::string fault = tooLargeRecord(image); !fault.empty())
        return fault;
    UnpackedImage unpacked(data, entry, image);
    if (unpacked.error() != ERROR_SUCCESS)
        return errorText(unpacked.error());
    GrowingFile file(text.path);
    if (!file.isOpen())
        return errorText(file.error());
    if (std::string fault = write(unpacked, image, text.format, file); !fault.empty())
        return fault;
    if (file.moveTo(text.path, text.replace) != ERROR_SUCCESS)
        return errorText(file.error());
    bytes = file.bytes();
    return "";
}

}  // namespace quillbox_set
