#include "unpacked_image.h"

#include "set/stream_decoding.h"

#include "ce/file.h"

namespace archive {

namespace {

// Makes the reader read the bytes from `start` up to, but not including, `end`.
bool seekTo(ImageReader& reader, std::uint64_t start, std::uint64_t end)
{
    auto high = static_cast<LONG>(start >> 32);
    SetLastError(ERROR_SUCCESS);
    if (SetFilePointer(reader.file, static_cast<LONG>(start), &high, FILE_BEGIN) == INVALID_SET_FILE_POINTER &&
        GetLastError() != ERROR_SUCCESS)
        return false;
    reader.filled = 0;
    reader.next = 0;
    reader.unread = end - start;
    return true;
}

}  // namespace

ImageRecords::~ImageRecords()
{
    for (const CEPROPVAL& property : properties_)
        FreeProperty(property);
}

bool ImageRecords::add(ImageReader& reader)
{
    WORD count = 0;
    if (!ReadPropertyCount(reader, count))
        return false;
    for (; count > 0; count--) {
        CEPROPVAL property{};
        if (!ReadProperty(reader, property))
            return false;
        properties_.push_back(property);
    }
    ends_.push_back(properties_.size());
    return true;
}

UnpackedImage::UnpackedImage(const OpenFile& data, const ListEntry& entry, const ImageReport& image)
    : image_(image), file_(u"\\"), reader_(std::make_unique<ImageReader>())
{
    // checkImage has already found the faults of the stream and stored them in `image`. So the return value of
    // DecodeStream is ignored. DecodeStream unpacks the bytes before a fault.
    (void)DecodeStream(data.handle(), entry.startOffset, entry.endOffset, GrowingFile::writeRaw, &file_);
    StartImageReader(*reader_, file_.handle());
}

bool UnpackedImage::read(std::size_t first, std::size_t end, ImageRecords& records)
{
    bool good = seekTo(*reader_, image_.ends[first], image_.ends[end]);
    for (; good && first < end; first++)
        good = records.add(*reader_);
    return good;
}

}  // namespace archive
