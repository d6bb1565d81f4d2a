// growing_file.h - a file that is written under an unguessable name in the target's folder, and moved to its target
// once it is complete. So neither an incomplete item nor a kill costs a file that exists there. Without the move, the
// file and the folders that were made for it are deleted.
//
// It uses the calls of the name space, which confine a set's paths to the folder of the extraction. The Output of
// quillbox-device writes to paths that the user gives, so it uses the host's calls and follows links.
#pragma once

#include "archive/set_files.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace quillbox_set {

class GrowingFile {
public:
    // Makes a new file in the folder of `target`, and the missing folders on the way. If the path would be too long,
    // the file is in the root.
    explicit GrowingFile(const std::u16string& target);
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;
    ~GrowingFile();

    bool isOpen() const { return file_.isOpen(); }
    DWORD error() const { return error_; }  // of the first call that failed
    std::uint64_t bytes() const { return bytes_; }

    // False once a write has failed.
    bool write(std::span<const std::byte> bytes);
    // The same as a sink for DecodeStream. `target` is the GrowingFile.
    static BOOL writeRaw(const BYTE* raw, DWORD bytes, void* target);
    // For reading what was written.
    HANDLE handle() const { return file_.handle(); }

    // Closes the file and moves it to `path`. With `replace`, an existing file is replaced atomically, after this one
    // was flushed to the disk, and this one takes its rights. Otherwise an existing file is an error. Returns error().
    DWORD moveTo(const std::u16string& path, bool replace);

private:
    std::u16string path_;  // empty without a file, and after moveTo
    std::vector<std::u16string> madeFolders_;
    archive::OpenFile file_;
    DWORD error_;
    std::uint64_t bytes_ = 0;
};

}  // namespace quillbox_set
