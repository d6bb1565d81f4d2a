// demonstration_text.h - content by the kilobyte, the same for the same size.
#pragma once

#include <cstddef>
#include <string>

namespace platform::device {

// Each gives exactly `bytes` bytes.
[[nodiscard]] std::string generatedText(std::size_t bytes);   // sentences, a paragraph a day
[[nodiscard]] std::string generatedTable(std::size_t bytes);  // rows of date, what, amount
[[nodiscard]] std::string generatedBytes(std::size_t bytes);  // nothing that packs

}  // namespace platform::device
