// growing_file.h - a file that appears at its target once it is complete. So neither an incomplete item nor a kill
// costs a file that exists there.
//
// What is written stays in memory up to 256 KB. Then it goes to a file with an unguessable name in the target's folder.
// Without the move, that file and the folders that were made for the target are deleted.
//
// It uses the calls of the name space, which confine a set's paths to the folder of the extraction. The Output of
// quillbox-device writes to paths that the user gives, so it uses the host's calls and follows links.
#pragma once

#include "archive/set_files.h"

#include "ce/error.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace archive {

class GrowingFile {
public:
    explicit GrowingFile(std::u16string target);
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;
    ~GrowingFile();

    DWORD error() const { return error_; }  // of the first call that failed
    std::uint64_t bytes() const { return bytes_; }

    // False once a write has failed.
    bool write(std::span<const std::byte> bytes);
    // Takes back what was written after the first `bytes`. They may not be more than bytes().
    bool cut(std::uint64_t bytes);
    // The same as a sink for DecodeStream. `target` is the GrowingFile. Throws a Stopped (long_work.h).
    static BOOL writeRaw(const BYTE* raw, DWORD bytes, void* target);
    // For reading what was written. INVALID_HANDLE_VALUE if it can't be stored; see error().
    HANDLE handle();
    // The same as a file. Null if it can't be stored.
    const OpenFile* opened();

    // Another target in place of the first one, also after a move that failed. The writes must have succeeded.
    void setTarget(std::u16string target);

    // Makes the file appear at the target, and makes missing folders of its path. With `replace`, an existing file is
    // replaced atomically, after this one was flushed to the disk, and this one takes its rights. Otherwise an existing
    // file is an error. So is a link or another object that the name space doesn't show: ERROR_DUP_NAME. Returns
    // error().
    DWORD moveToTarget(bool replace);

private:
    bool makeWhole();
    bool store();
    void moveStored(bool replace);
    void removeMadeFolders();

    std::u16string target_;
    std::vector<std::byte> held_;   // what was written, as long as there is no file
    std::u16string path_;           // of the file; empty without one
    std::optional<OpenFile> file_;  // open until it is moved
    std::vector<std::u16string> madeFolders_;
    DWORD error_ = ERROR_SUCCESS;
    DWORD contentError_ = ERROR_SUCCESS;  // not all of the content was written, so no target can have it
    std::uint64_t bytes_ = 0;
};

}  // namespace archive
