// killed_process.h - kills a process at a chosen system call.
#pragma once

#include <functional>

// Runs `work` in another process. Kills this process before the system call with the number `calls`. Calls that change
// only the process's memory aren't counted. Returns false if the process ended earlier.
bool killedBeforeCall(int calls, const std::function<void()>& work);
