// failing_blocks.h - makes LocalAlloc fail; it takes the place of the platform's own.
#pragma once

// From the nth block on; 0: every one succeeds again.
void failBlocksFrom(unsigned long nth);
