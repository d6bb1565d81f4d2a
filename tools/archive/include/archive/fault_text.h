// fault_text.h - messages for the faults of a set and for errors of the platform.
#pragma once

#include "set/stream_decoding.h"

#include "ce/types.h"

#include <string>
#include <vector>

namespace archive {

// One message for each bit of `faults` (see ListFault). `text` names the text with the faults: "the comment", "its
// name".
std::vector<std::string> listFaultTexts(DWORD faults, const std::string& text);

// "the data file is missing", "the data file can't be opened: no permission".
std::string notOpened(const std::string& what, DWORD error);

std::string streamFaultText(StreamFault fault);

// What the error of the platform means for an extraction.
std::string errorText(DWORD error);

}  // namespace archive
