// folder_reader.h - the entries of a host folder, one after the other, read in large blocks.
#pragma once

#include "host_calls.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace platform::file {

class FolderReader {
public:
    // `folder` is open for reading.
    explicit FolderReader(Descriptor folder);

    [[nodiscard]] int folder() const { return folder_.get(); }

    // The next name, NUL-terminated, good until the next call. What can't be a file or folder is passed over
    // as far as the folder itself tells kinds. Nothing at the end or on a failure, which error() tells.
    [[nodiscard]] std::optional<std::string_view> next();

    // 0 or a negative errno.
    [[nodiscard]] int error() const { return error_; }

private:
    [[nodiscard]] bool readBlock();

    Descriptor folder_;
    std::unique_ptr<std::byte[]> block_;
    std::size_t place_ = 0;
    std::size_t filled_ = 0;
    int error_ = 0;
};

}  // namespace platform::file
