// record_limit.h - how much of a file a reader takes for one record.
#pragma once

#include <cstddef>

namespace database_formats {

// Bytes. A device has less memory than that, and a file made to fill ours is refused.
inline constexpr std::size_t LongestRecord = std::size_t{64} * 1024 * 1024;

}  // namespace database_formats
