// store_time.h - returns the current time in ticks (units of 100 ns since 1601 UTC), and converts ticks to a FILETIME.
#pragma once

#include "ce/types.h"

#include <chrono>
#include <cstdint>

namespace platform::store {

inline std::int64_t ticksNow()
{
    constexpr std::int64_t TicksTo1970 = 116444736000000000;
    const auto since1970 = std::chrono::system_clock::now().time_since_epoch();
    return TicksTo1970 +
           std::chrono::duration_cast<std::chrono::duration<std::int64_t, std::ratio<1, 10000000>>>(since1970).count();
}

inline FILETIME fileTimeOf(std::int64_t ticks)
{
    return {static_cast<DWORD>(ticks & 0xFFFFFFFF), static_cast<DWORD>(ticks >> 32)};
}

}  // namespace platform::store
