// folder_reader.h - the entries of a host folder, one after the other, in the order of their names.
//
// A host gives them in whatever order its file system keeps them, which is none for a reader: all names are read at the
// first call and sorted, letters of the Latin alphabet without case.
#pragma once

#include "host_calls.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace platform::file {

class FolderReader {
public:
    // `folder` is open for reading.
    explicit FolderReader(Descriptor folder) : folder_(std::move(folder)) {}

    [[nodiscard]] int folder() const { return folder_.number(); }

    // The next name, NUL-terminated, good as long as the reader. What can't be a file or folder is passed over as far
    // as the folder itself tells kinds. Nothing at the end or on a failure, which error() tells then.
    [[nodiscard]] std::optional<std::string_view> next();

    // 0 or a negative errno.
    [[nodiscard]] int error() const { return error_; }

private:
    void readAll();

    Descriptor folder_;
    std::vector<char> names_;         // each with its NUL
    std::vector<std::size_t> order_;  // where they start
    std::size_t next_ = 0;
    bool isRead_ = false;
    int error_ = 0;
};

}  // namespace platform::file
