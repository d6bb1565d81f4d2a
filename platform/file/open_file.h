// open_file.h - what a file handle stands for: a place in a file, and what the handle may do there.
#pragma once

#include "device_path.h"
#include "host_calls.h"
#include "kernel/handle_table.h"
#include "open_files.h"
#include "read_ahead.h"
#include "shared_file.h"

#include "ce/file.h"
#include "ce/file_deletion.h"

#include <cstdint>
#include <memory>
#include <span>

namespace platform::file {

// Any thread may use it; one call at a time per file.
class OpenFile final : public kernel::Object {
public:
    // `file` was entered into `table` under `key` and `sharing`; the destructor takes it out. The descriptor of a
    // temporary file isn't closed then but kept (temporary_file.h).
    OpenFile(std::shared_ptr<OpenFiles> table, std::shared_ptr<SharedFile> file, const FileKey& key,
             const Sharing& sharing, Descriptor descriptor, HostPlace place, bool temporary);
    ~OpenFile() override;

    [[nodiscard]] DWORD close() override;

    [[nodiscard]] std::u16string path() const { return devicePathOf(hostPlace_); }

    [[nodiscard]] ReadResult read(std::span<std::byte> out);
    [[nodiscard]] Written write(std::span<const std::byte> bytes);

    struct Sought {
        std::uint64_t place = 0;
        DWORD error = 0;
    };
    [[nodiscard]] Sought seek(std::int64_t distance, DWORD method);

    // Makes the handle's place the file's end.
    [[nodiscard]] DWORD endHere();

    [[nodiscard]] DWORD flush();
    [[nodiscard]] DWORD handOver();
    [[nodiscard]] DWORD stamp(FileStamp& stamp);
    [[nodiscard]] DWORD tell(BY_HANDLE_FILE_INFORMATION& information);

private:
    [[nodiscard]] bool mayRead() const { return (sharing_.access & GENERIC_READ) != 0; }
    [[nodiscard]] bool mayWrite() const { return (sharing_.access & GENERIC_WRITE) != 0; }
    [[nodiscard]] bool othersMayWrite() const
    {
        return sharing_.access == 0 || (sharing_.share & FILE_SHARE_WRITE) != 0;
    }
    [[nodiscard]] DWORD writeOut();
    [[nodiscard]] DWORD refreshSize(HostStatus& status);
    [[nodiscard]] DWORD flushEntries() const;

    const std::shared_ptr<OpenFiles> table_;
    const std::shared_ptr<SharedFile> file_;
    const FileKey key_;
    const Sharing sharing_;
    Descriptor descriptor_;
    const HostPlace hostPlace_;
    const bool temporary_;

    // Guarded by the file's lock.
    std::uint64_t place_ = 0;
    ReadAhead ahead_;
    std::uint64_t aheadVersion_ = 0;
    bool entriesFlushed_ = false;
};

}  // namespace platform::file
