// data_digest.h - computes the digest of a set's data file while the run writes the file, so that the seal needn't read
// the file again.
//
// The thread reads only bytes that the run has written to the file and won't change (ReportStoredBytes). The only data
// that the thread shares with the run are the numbers of kernel/run_progress.h.
#pragma once

#include "command_session.h"

#include "archive/seal.h"
#include "kernel/mutex.h"

#include <optional>
#include <thread>

namespace platform::device {

class DataDigest {
public:
    // Starts a thread that waits for the next run and hashes what that run writes. Does nothing if `wanted` is false.
    DataDigest(const Session& session, bool wanted);
    DataDigest(const DataDigest&) = delete;
    DataDigest& operator=(const DataDigest&) = delete;
    ~DataDigest();

    // Returns the digest of all bytes that the run wrote to the data file. Call it after the run. Nothing if the run
    // wrote no bytes or the file couldn't be read.
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
