// data_digest.h - computes the digest of a set's data file while the run writes the file, so that the seal needn't read
// the file again.
//
// The thread reads only bytes that the run has passed to the host and won't change (ReportStoredBytes). It shares
// nothing with the run but the numbers of kernel/run_progress.h.
#pragma once

#include "command_session.h"

#include "archive/seal.h"
#include "kernel/mutex.h"

#include <optional>
#include <thread>

namespace platform::device {

class DataDigest {
public:
    // Waits for the next run, and follows it. Does nothing if not `wanted`.
    DataDigest(const Session& session, bool wanted);
    DataDigest(const DataDigest&) = delete;
    DataDigest& operator=(const DataDigest&) = delete;
    ~DataDigest();

    // To be called after the run: the digest of all that it stored. Nothing if the file couldn't be read.
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
