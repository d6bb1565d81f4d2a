// result_line.h - prints the results of the commands that read several sets: one line each, as text or JSON.
#pragma once

#include "archive/set_search.h"

#include "database_formats/left_out.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace quillbox_set {

// Bytes of the host as the text of a JSON value. Bytes that aren't UTF-8 become U+FFFD when it is printed.
nlohmann::ordered_json jsonText(std::string_view bytes);

// Prints the object in one line, after the version (json_list.h), or the text, which must be safe to print. The first
// line is passed on at once, and further ones every 20 ms, so that a reader of a pipe sees results as they are found.
void printResult(bool json, const nlohmann::ordered_json& object, const std::string& text);

// Prints a message on standard error. Returns exitNoSet.
int reportTrouble(const std::string& text);

// Names on standard error what the text of a database doesn't have, if there is anything.
void reportLeftOut(std::u16string_view database, const database_formats::LeftOut& leftOut);

// Prints what the search didn't find. Returns the exit code for it.
int reportFaults(const archive::FoundSets& found);

}  // namespace quillbox_set
