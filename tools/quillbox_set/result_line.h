// result_line.h - prints the results of the commands that read several sets, as text or as one line of JSON each.
#pragma once

#include "archive/set_search.h"

#include "database_formats/left_out.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace quillbox_set {

// Returns the bytes, such as a path of the host (the Linux system), as a JSON string. When the string is printed, bytes
// that aren't UTF-8 become U+FFFD.
nlohmann::ordered_json jsonText(std::string_view bytes);

// With `json`, prints the version (json_list.h) and the fields of the object in one line. Otherwise prints the text,
// which must be safe to print. A line is flushed at once if the last flush was at least 20 ms ago, so that a reader of
// a pipe sees results as they are found. Any other line is flushed with a later line or at the end of the process.
void printResult(bool json, const nlohmann::ordered_json& object, const std::string& text);

// Prints a message on standard error. Returns exitNoSet.
int reportTrouble(const std::string& text);

// If the text of a database leaves something out, says so on standard error.
void reportLeftOut(std::u16string_view database, const database_formats::LeftOut& leftOut);

// Prints the faults in `found`. Returns exitGood if there are no faults, otherwise exitNoSet.
int reportFaults(const archive::FoundSets& found);

}  // namespace quillbox_set
