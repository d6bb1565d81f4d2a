// growing_file.h - a file that appears at its target path only when it is complete. So an incomplete item or a killed
// process doesn't damage an existing file at that path.
//
// Up to 256 KB of content stay in memory. Longer content goes to a temporary file with an unguessable name in the
// target's folder. If the file isn't moved to its target, the destructor deletes the temporary file and the folders
// that were made for the target.
//
// GrowingFile uses the platform's file calls, which confine a set's paths to the folder of the extraction. The class
// Output (host_output.h) writes to paths that the user gives, so it uses the calls of the host (the Linux system) and
// follows links.
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

    DWORD error() const { return error_; }  // of the first call that failed; see setTarget()
    std::uint64_t bytes() const { return bytes_; }

    // Returns false if this write or an earlier call has failed.
    bool write(std::span<const std::byte> bytes);
    // Cuts the content to its first `bytes` bytes. `bytes` may not be more than bytes().
    bool cut(std::uint64_t bytes);
    // A sink for DecodeStream that calls write(). `target` is the GrowingFile. Throws the exception Stopped if the work
    // is to stop (long_work.h).
    static BOOL writeRaw(const BYTE* raw, DWORD bytes, void* target);
    // Stores the content in the temporary file and returns the handle of that file, for reading. Returns
    // INVALID_HANDLE_VALUE if the content can't be stored (see error()).
    HANDLE handle();
    // Does the same as handle(), but returns the open file. Null if the content can't be stored.
    const OpenFile* opened();

    // Sets another target path, for example after moveToTarget() has failed. Clears error(), unless it is the error of
    // a write.
    void setTarget(std::u16string target);

    // Makes the file appear at the target path, and makes missing folders of that path. If a file exists at the target
    // path, the result depends on `replace`. With `replace`, the new file is flushed to the disk, replaces the existing
    // file atomically and takes its rights. Without `replace`, the call fails with ERROR_FILE_EXISTS or
    // ERROR_ALREADY_EXISTS. If a link or another object that the platform doesn't show exists at the target path, the
    // error is ERROR_DUP_NAME in both cases. Returns error().
    DWORD moveToTarget(bool replace);

private:
    bool makeWhole();
    bool store();
    void moveStored(bool replace);
    void nameTargetInTrouble();
    void removeMadeFolders();

    std::u16string target_;
    std::vector<std::byte> held_;   // the content while there is no temporary file
    std::u16string path_;           // of the temporary file; empty if there is none
    std::optional<OpenFile> file_;  // open until it is moved
    std::vector<std::u16string> madeFolders_;
    DWORD error_ = ERROR_SUCCESS;
    DWORD contentError_ = ERROR_SUCCESS;  // of a write that failed; a new target doesn't clear it
    std::uint64_t bytes_ = 0;
};

}  // namespace archive
