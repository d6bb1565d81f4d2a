#include "common_arguments.h"

#include "archive/set_folder.h"
#include "result_line.h"
#include "screen_text/screen_text.h"

namespace quillbox_set {

using namespace archive;

void addJson(CLI::App& command, CommandLine& line)
{
    command.add_flag("--json", line.json, "prints JSON");
}

void addSet(CLI::App& command, CommandLine& line)
{
    command
        .add_option("SET", line.set,
                    "path of a list file (.QLT) or a data file (.QDT), or that path without its ending")
        ->required();
}

void addWhereAlone(CLI::App& command, CommandLine& line)
{
    command
        .add_option("WHERE", line.where,
                    "list files, data files, their paths without the ending, or folders with sets such as a card")
        ->required();
    command.add_flag("--recursive", line.recursive, "searches folders in depth");
}

void addWhere(CLI::App& command, CommandLine& line)
{
    addWhereAlone(command, line);
    addJson(command, line);
}

int reportNoSet(const std::string& argument)
{
    const std::optional<SetFolder> folder = findSets(argument);
    return reportTrouble(folder ? setIsWanted(*folder)
                                : "there is no list file for " + screen_text::onScreen(argument));
}

}  // namespace quillbox_set
