// job.h - the job that is in progress (ce/outcome.h), and the request to stop it.
#pragma once

#include <cstdint>

namespace platform::kernel {

// Called by BeginJob and EndJob.
void noteJobBegin();
void noteJobEnd();

// The number of the job that is in progress, counted from 1. 0 if there is none.
std::uint64_t currentJob();

// Both requests can come from any thread and from a signal handler. The job ends between two of its items.
void stopJob();       // does nothing if no job is in progress
void stopEveryJob();  // also those that begin later

// From now on SIGINT, SIGTERM and SIGHUP stop every job, and call `then` in the signal handler if it isn't null. A
// second such signal ends the process at once. A signal that the caller of the process ignores stays ignored.
void stopEveryJobAtSignal(void (*then)() = nullptr);

}  // namespace platform::kernel
