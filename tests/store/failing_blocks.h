// failing_blocks.h - replaces LocalAlloc by one that can fail.
#pragma once

// From the nth block on; 0: every one succeeds again.
void failBlocksFrom(unsigned long nth);
