// failing_memory.h - makes the nth allocation after the call fail, and all later ones, including those by LocalAlloc.
#pragma once

// 0: every allocation succeeds again.
void failAllocationsFrom(unsigned long nth);
