// folder_reader.h - reads the entries of a host folder in large blocks, and returns their names one by one.
#pragma once

#include "host_calls.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

namespace platform::file {

enum class Wanted { All, Folders };

class FolderReader {
public:
    // `folder` is open for reading.
    explicit FolderReader(Descriptor folder, Wanted wanted = Wanted::All);

    int folder() const { return folder_.get(); }

    // Returns the next name, which is NUL-terminated and valid until the next call. The result is empty at the end and
    // after a failure, and error() tells these two apart.
    // Skips entries that are neither files nor folders, and also files if only folders are wanted. The caller must
    // check the type again, because some file systems don't store the types of the entries in the folder.
    [[nodiscard]] std::optional<std::string_view> next();

    // 0 or a negative errno.
    int error() const { return error_; }

private:
    [[nodiscard]] bool readBlock();

    Descriptor folder_;
    Wanted wanted_;
    std::unique_ptr<std::byte[]> block_;
    std::size_t next_ = 0;
    std::size_t filled_ = 0;
    int error_ = 0;
};

}  // namespace platform::file
