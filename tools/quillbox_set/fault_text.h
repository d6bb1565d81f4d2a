// fault_text.h - what is wrong with a set, in words.
#pragma once

#include "set/stream_decoding.h"

#include "ce/types.h"

#include <string>
#include <vector>

namespace quillbox_set {

// Of ListFault bits; `text` is what has them: "the comment", "its name".
[[nodiscard]] std::vector<std::string> listFaultTexts(DWORD faults, const std::string& text);

[[nodiscard]] std::string streamFaultText(StreamFault fault);

// What the platform's error means to the user.
[[nodiscard]] std::string errorText(DWORD error);

}  // namespace quillbox_set
