// folder_reader.h - reads the names in a host folder one by one, in large blocks.
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

    // The next name, NUL-terminated and valid until the next call. Entries that are neither files nor folders, and
    // files if only folders are wanted, are skipped if the file system says so in the folder. Empty at the end and on
    // failure; then error() is set.
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
