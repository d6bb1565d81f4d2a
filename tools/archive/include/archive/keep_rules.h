// keep_rules.h - decides which of several sets to keep (docs/archive.md, "prune").
#pragma once

#include "archive/set_date.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace archive {

// The years, months, days and hours that are subtracted from the date of the newest set.
struct Within {
    int years = 0;
    int months = 0;
    int days = 0;
    int hours = 0;
};

// Parses texts such as "30d", "1y6m", "2w" and "12h". Returns nothing for any other text.
std::optional<Within> withinFrom(std::string_view text);

struct KeepRules {
    // `last` is the number of newest sets to keep. `daily` keeps the newest set of each day, for the newest `daily`
    // days that have a set. `weekly`, `monthly` and `yearly` do the same for ISO weeks, months and years. A rule whose
    // number is 0 keeps nothing.
    unsigned last = 0;
    unsigned daily = 0;
    unsigned weekly = 0;
    unsigned monthly = 0;
    unsigned yearly = 0;
    std::optional<Within> within;

    bool areEmpty() const { return (last | daily | weekly | monthly | yearly) == 0 && !within; }
};

// Returns for each set which rules keep it, such as "last, daily", or an empty text if none does. The newest set comes
// first. If a rule with a number has found fewer sets than this number, it also keeps the oldest set.
std::vector<std::string> keptBecause(const std::vector<SetDate>& newestFirst, const KeepRules& rules);

}  // namespace archive
