// killed_process.h - kills a process at a chosen system call.
#pragma once

#include <functional>

// Runs `work` in a child process, and kills the child before its system call number `calls`, counted from 0. Calls that
// change only the child's memory aren't counted. Returns false if the child ended earlier.
bool killedBeforeCall(int calls, const std::function<void()>& work);
