// unpacked_image.h - unpacks the image of a database to a temporary file, so that its records can be read in any order.
#pragma once

#include "archive/growing_file.h"
#include "archive/image_check.h"
#include "set/image_reader.h"

#include <memory>
#include <span>
#include <vector>

namespace archive {

// Consecutive records of an image, with the texts and blobs that their properties point to.
class ImageRecords {
public:
    ImageRecords() = default;
    ImageRecords(const ImageRecords&) = delete;
    ImageRecords& operator=(const ImageRecords&) = delete;
    ~ImageRecords();

    // Reads the next record and adds it. Returns false if it can't be read.
    [[nodiscard]] bool add(ImageReader& reader);

    std::size_t size() const { return ends_.size() - 1; }
    std::span<const CEPROPVAL> record(std::size_t index) const
    {
        return std::span(properties_).subspan(ends_[index], ends_[index + 1] - ends_[index]);
    }

private:
    std::vector<CEPROPVAL> properties_;
    std::vector<std::size_t> ends_ = {0};  // a 0, and then for each record the index in properties_ where it ends
};

class UnpackedImage {
public:
    // Unpacks the stream as far as possible into a temporary file in the root folder. The destructor deletes the file.
    // `image` is the result of checkImage for the same entry.
    UnpackedImage(const OpenFile& data, const ListEntry& entry, const ImageReport& image);

    // Returns the error of writing the file, or ERROR_SUCCESS. A damaged stream isn't an error here, because `image`
    // already reports the damage.
    DWORD error() const { return file_.error(); }

    // Adds the records from index `first` up to, but not including, `end` to `records`. They must be complete in the
    // image. Returns false if a record can't be read.
    [[nodiscard]] bool read(std::size_t first, std::size_t end, ImageRecords& records);

private:
    const ImageReport& image_;
    GrowingFile file_;
    std::unique_ptr<ImageReader> reader_;
};

}  // namespace archive
