// killed_process.h - kills a process at a chosen system call.
#pragma once

#include <functional>

// Runs `work` in another process and kills it before its system call number `calls`. False if it ended before that.
bool killedBeforeCall(int calls, const std::function<void()>& work);
