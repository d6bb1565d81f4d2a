// unpacked_image.h - a database's image as a file for as long as its records are taken out, in any order.
#pragma once

#include "growing_file.h"
#include "image_check.h"
#include "set/image_reader.h"

#include <memory>
#include <span>
#include <vector>

namespace quillbox_set {

// Records that follow on one another in an image, with the texts and blobs that their properties point to.
class ImageRecords {
public:
    ImageRecords() = default;
    ImageRecords(const ImageRecords&) = delete;
    ImageRecords& operator=(const ImageRecords&) = delete;
    ~ImageRecords();

    // Adds the record that comes next. False if it can't be read.
    [[nodiscard]] bool add(ImageReader& reader);

    [[nodiscard]] std::size_t size() const { return ends_.size() - 1; }
    [[nodiscard]] std::span<const CEPROPVAL> record(std::size_t place) const
    {
        return std::span(properties_).subspan(ends_[place], ends_[place + 1] - ends_[place]);
    }

private:
    std::vector<CEPROPVAL> properties_;
    std::vector<std::size_t> ends_ = {0};  // in it
};

class UnpackedImage {
public:
    // Unpacks the stream into a file in the root that goes with this, as far as it unpacks: `image` tells how far.
    UnpackedImage(const OpenFile& data, const ListEntry& entry, const ImageReport& image);

    // Of the unpacking.
    [[nodiscard]] DWORD error() const { return file_.error(); }

    // Adds the records from place `first` to before `behind` that `image` has whole.
    [[nodiscard]] bool read(std::size_t first, std::size_t behind, ImageRecords& records);

private:
    const ImageReport& image_;
    GrowingFile file_;
    std::unique_ptr<ImageReader> reader_;
};

}  // namespace quillbox_set
