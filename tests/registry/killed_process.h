// killed_process.h - a process that is killed at a place of the test's choice, as a battery that is taken out would.
#pragma once

#include <functional>

// Runs `work` in a process of its own and kills that before its system call number `calls`. False if it ended before.
bool killedBeforeCall(int calls, const std::function<void()>& work);
