// stream_outcome.h - defines the outcome of packing or unpacking a file.
#pragma once

#include "ce/types.h"

struct StreamOutcome {
    BOOL made;   // the call created the target
    BOOL whole;  // all of the source is in the target
    // The first reason why `whole` is 0: the error of a call that failed, ERROR_HANDLE_EOF if fewer bytes were read
    // than the source has, or ERROR_FILE_CORRUPT if the stream is damaged or not closed, or its magic can't be read.
    DWORD error;
};
