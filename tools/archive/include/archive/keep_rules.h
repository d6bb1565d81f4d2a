// keep_rules.h - which of several sets to keep (docs/archive.md, "prune").
#pragma once

#include "archive/set_date.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace archive {

// A time back from the newest set, counted by the calendar.
struct Within {
    int years = 0;
    int months = 0;
    int days = 0;
    int hours = 0;
};

// "30d", "1y6m", "2w", "12h". Nothing for another text.
std::optional<Within> withinFrom(std::string_view text);

struct KeepRules {
    // How many to keep: the last ones, and the last one of each day, ISO week, month and year. 0: the rule isn't used.
    unsigned last = 0;
    unsigned daily = 0;
    unsigned weekly = 0;
    unsigned monthly = 0;
    unsigned yearly = 0;
    std::optional<Within> within;

    bool areEmpty() const { return last + daily + weekly + monthly + yearly == 0 && !within; }
};

// Why each set is kept: "last, daily". Empty: it isn't. The newest set comes first. A rule that counts periods and has
// found fewer than it may keep also keeps the oldest set.
std::vector<std::string> keptBecause(const std::vector<SetDate>& newestFirst, const KeepRules& rules);

}  // namespace archive
