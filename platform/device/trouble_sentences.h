// trouble_sentences.h - what a run of the program couldn't read or write, in sentences for whoever started it.
#pragma once

#include <string>
#include <vector>

namespace platform::device {

// None if all went well. The program itself may have passed over it in silence.
[[nodiscard]] std::vector<std::string> whatWasLeftOut();

}  // namespace platform::device
