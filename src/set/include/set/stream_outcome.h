// stream_outcome.h - what became of a file that was packed or unpacked.
#pragma once

#include "ce/types.h"

struct StreamOutcome {
    BOOL made;    // the target was created: the file at its path isn't an older one
    BOOL whole;   // all of the source is in the target
    DWORD error;  // if it isn't whole: of the first call that failed; ERROR_HANDLE_EOF if fewer bytes were read than
                  // the source is long; ERROR_FILE_CORRUPT if the stream is damaged or not closed
};
