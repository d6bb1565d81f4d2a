// failing_memory.h - makes the nth allocation from here on fail, and all after it, also those by LocalAlloc.
#pragma once

// 0: every allocation succeeds again.
void failAllocationsFrom(unsigned long nth);
