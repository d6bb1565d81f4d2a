// job.h - the job that is in progress (ce/outcome.h), and the request to stop it.
#pragma once

#include <cstdint>

namespace platform::kernel {

// Called by BeginJob and EndJob.
void noteJobBegin();
void noteJobEnd();

// The number of the job that is in progress, counted from 1. 0 if there is none.
std::uint64_t currentJob();

// Any thread and a signal handler may call these two functions. A stopped job ends before its next item.
void stopJob();       // does nothing if no job is in progress
void stopEveryJob();  // stops the job that is in progress and all later ones

// From now on SIGINT, SIGTERM and SIGHUP stop every job. The signal handler also calls `then` if `then` isn't null. A
// second signal of the same number ends the process at once. A signal that was ignored when the process started stays
// ignored.
void stopEveryJobAtSignal(void (*then)() = nullptr);

}  // namespace platform::kernel
