// stream_outcome.h - the outcome of packing or unpacking a file.
#pragma once

#include "ce/types.h"

struct StreamOutcome {
    BOOL made;    // the call created the target
    BOOL whole;   // all of the source is in the target
    DWORD error;  // if `whole` is 0: the error of the first call that failed; ERROR_HANDLE_EOF if fewer bytes were read
                  // than the source is long; ERROR_FILE_CORRUPT if the stream is damaged or not closed
};
