#include "archive/keep_options.h"

namespace archive {

void addKeepOptions(CLI::App& command, KeepRules& rules)
{
    command.add_option("--keep-last", rules.last, "keeps the last N sets")->type_name("N");
    command.add_option("--keep-daily", rules.daily, "keeps the last set of each of the last N days that have one")
        ->type_name("N");
    command.add_option("--keep-weekly", rules.weekly, "the same for weeks, which begin on Monday")->type_name("N");
    command.add_option("--keep-monthly", rules.monthly, "the same for months")->type_name("N");
    command.add_option("--keep-yearly", rules.yearly, "the same for years")->type_name("N");
    command
        .add_option_function<std::string>(
            "--keep-within", [&rules](const std::string& text) { rules.within = withinFrom(text); },
            "keeps all sets that are newer than this before the newest one: 30d, 1y6m, 2w, 12h")
        ->type_name("TIME")
        ->check([](const std::string& text) { return withinFrom(text) ? "" : "\"" + text + "\" is not a time"; });
}

}  // namespace archive
