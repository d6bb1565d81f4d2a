// data_digest.h - computes the digest of a set's data file while a backup writes the file. So the file needn't be read
// again when the set's file with checksums is written.
//
// A thread of its own reads the bytes that the backup has written to the file and won't change (ReportStoredBytes). The
// thread learns about the backup only from kernel/run_progress.h.
#pragma once

#include "command_session.h"

#include "archive/seal.h"
#include "kernel/mutex.h"

#include <optional>
#include <thread>

namespace platform::device {

class DataDigest {
public:
    // Starts a thread that waits for the next run and hashes the bytes of its data file. Does nothing if `wanted` is
    // false.
    DataDigest(const Session& session, bool wanted);
    DataDigest(const DataDigest&) = delete;
    DataDigest& operator=(const DataDigest&) = delete;
    ~DataDigest();

    // Call it after the run. Returns the digest of all bytes that the run wrote to the data file. Returns nothing if
    // the run wrote no bytes, if the file couldn't be read, or if `wanted` was false.
    [[nodiscard]] std::optional<archive::FileDigest> finish();

private:
    void follow(unsigned runBefore);
    [[nodiscard]] bool isOver();
    void end();

    const Session& session_;
    kernel::Mutex mutex_;
    kernel::Condition changed_;
    bool over_ GUARDED_BY(mutex_) = false;
    std::optional<archive::FileDigest> digest_;  // written by the thread, read after its end
    std::thread thread_;
};

}  // namespace platform::device
