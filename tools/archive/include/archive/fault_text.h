// fault_text.h - messages for the faults of a set and for errors of the platform.
#pragma once

#include "set/stream_decoding.h"

#include "ce/types.h"

#include <string>
#include <vector>

namespace archive {

// Returns one message for each bit that is set in `faults` (see ListFault). `text` names the faulty text, for example
// "the comment" or "its name".
std::vector<std::string> listFaultTexts(DWORD faults, const std::string& text);

// Returns a message such as "the data file is missing" or "the data file can't be opened: no permission".
std::string notOpened(const std::string& what, DWORD error);

std::string streamFaultText(StreamFault fault);

// Returns a text that tells the user why a file can't be made or written. `error` is the error code of the platform.
std::string errorText(DWORD error);

}  // namespace archive
