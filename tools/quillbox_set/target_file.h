// target_file.h - a file that an extraction writes, below the root of the name space. It stays only if it is kept: half
// of an item must not pass for one.
#pragma once

#include "set_files.h"

#include <cstddef>
#include <span>
#include <string>

namespace quillbox_set {

class TargetFile {
public:
    // Makes the folders above it. `replace`: a file that exists is emptied; otherwise it is an error.
    TargetFile(std::u16string path, bool replace);
    TargetFile(const TargetFile&) = delete;
    TargetFile& operator=(const TargetFile&) = delete;
    ~TargetFile();

    [[nodiscard]] bool isOpen() const { return file_.isOpen(); }
    [[nodiscard]] HANDLE handle() const { return file_.handle(); }
    [[nodiscard]] DWORD error() const { return error_; }  // of the opening or the first write that failed
    [[nodiscard]] std::uint64_t bytes() const { return bytes_; }

    // False once a write has failed.
    bool write(std::span<const std::byte> bytes);
    void keep();

private:
    std::u16string path_;
    OpenFile file_;
    DWORD error_;
    std::uint64_t bytes_ = 0;
    bool kept_ = false;
};

}  // namespace quillbox_set
