// open_file.h - defines OpenFile, the object behind a file handle. An OpenFile holds the position and the access of its
// handle.
#pragma once

#include "device_path.h"
#include "host_calls.h"
#include "kernel/handle_table.h"
#include "open_files.h"
#include "read_ahead.h"
#include "shared_file.h"

#include "ce/file.h"
#include "ce/file_stamp.h"

#include <cstdint>
#include <memory>
#include <span>

namespace platform::file {

// Any thread may use the object. The lock of the file serialises the calls of all its handles.
class OpenFile final : public kernel::Object {
public:
    // The caller first calls table.enter() for `file` with `sharing`, and then constructs this object. The destructor
    // calls table.leave(). `opened` is the stamp that the file had when it was opened. For a temporary file,
    // `descriptor` is empty and `opened` is left out.
    OpenFile(OpenFiles& table, std::shared_ptr<SharedFile> file, const Sharing& sharing, Descriptor descriptor,
             HostPath hostPath, const FileStamp& opened = {});
    ~OpenFile() override;

    [[nodiscard]] DWORD close() override;

    std::u16string path() const { return devicePathOf(hostPath_); }

    [[nodiscard]] ReadResult read(std::span<std::byte> out);
    [[nodiscard]] Written write(std::span<const std::byte> bytes);

    struct Sought {
        std::uint64_t position = 0;
        DWORD error = 0;
    };
    [[nodiscard]] Sought seek(std::int64_t distance, DWORD method);

    // Makes the file end at the handle's position.
    [[nodiscard]] DWORD endHere();

    [[nodiscard]] DWORD flush();
    [[nodiscard]] DWORD handOver();
    [[nodiscard]] DWORD writeAfter(const OpenFile& earlier);
    [[nodiscard]] DWORD markUnfinished();
    [[nodiscard]] DWORD markFinished();
    [[nodiscard]] DWORD dropFromCache() const;
    [[nodiscard]] DWORD stamp(FileStamp& stamp);
    [[nodiscard]] DWORD describe(BY_HANDLE_FILE_INFORMATION& information);

private:
    bool mayRead() const { return (sharing_.access & GENERIC_READ) != 0; }
    bool mayWrite() const { return (sharing_.access & GENERIC_WRITE) != 0; }
    bool othersMayWrite() const { return sharing_.access == 0 || (sharing_.share & FILE_SHARE_WRITE) != 0; }
    int descriptor() const REQUIRES(file_->mutex())
    {
        return file_->isTemporary() ? file_->temporaryFile() : descriptor_.get();
    }
    // Gives a temporary file its name on the host. Call it before a call that needs the file on the host. Returns 0 or
    // the error.
    [[nodiscard]] DWORD placeOnHost() EXCLUDES(file_->mutex())
    {
        return file_->isTemporary() ? table_.nameOnHost(*file_) : 0;
    }
    [[nodiscard]] DWORD writeOut() REQUIRES(file_->mutex());
    [[nodiscard]] DWORD refreshSize(HostStatus& status) REQUIRES(file_->mutex());
    [[nodiscard]] DWORD endOfFile(std::uint64_t& end) REQUIRES(file_->mutex());
    [[nodiscard]] DWORD flushToHost() REQUIRES(file_->mutex());
    [[nodiscard]] DWORD flushEntries() const;

    OpenFiles& table_;
    const std::shared_ptr<SharedFile> file_;
    const Sharing sharing_;
    Descriptor descriptor_;
    const HostPath hostPath_;
    const FileStamp opened_;

    std::uint64_t position_ GUARDED_BY(file_->mutex()) = 0;
    ReadAhead ahead_ GUARDED_BY(file_->mutex());
    std::uint64_t aheadVersion_ GUARDED_BY(file_->mutex()) = 0;  // file_->version() of the bytes in ahead_
    bool entriesFlushed_ GUARDED_BY(file_->mutex()) = false;
};

}  // namespace platform::file
