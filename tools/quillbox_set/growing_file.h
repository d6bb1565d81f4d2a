// growing_file.h - a file that is written under a name that nobody knows, beside its place. It goes again, with the
// folders that were made for it, unless it is moved there when it is whole: neither half of an item nor a kill may cost
// what stood there.
#pragma once

#include "set_files.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace quillbox_set {

class GrowingFile {
public:
    // A new file in the folder of `place`, whose missing folders are made; in the root if the path would be too long.
    explicit GrowingFile(const std::u16string& place);
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;
    ~GrowingFile();

    [[nodiscard]] bool isOpen() const { return file_.isOpen(); }
    [[nodiscard]] HANDLE handle() const { return file_.handle(); }
    [[nodiscard]] DWORD error() const { return error_; }  // of the first call that failed
    [[nodiscard]] std::uint64_t bytes() const { return bytes_; }

    // False once a write has failed.
    bool write(std::span<const std::byte> bytes);

    // Closes it and gives it its place. With `replace` a file that stands there goes in the same moment, once this one
    // is on the disk, and this one takes its rights; otherwise it is an error. Returns error().
    DWORD moveTo(const std::u16string& path, bool replace);

private:
    std::u16string path_;  // empty without a file, and when that has its place
    std::vector<std::u16string> madeFolders_;
    OpenFile file_;
    DWORD error_;
    std::uint64_t bytes_ = 0;
};

}  // namespace quillbox_set
