// item_inside.h - describes the content of a database or of the registry in a set.
#pragma once

#include "archive/listed_set.h"

#include <nlohmann/json.hpp>

#include <string>

namespace quillbox_set {

// NOLINTNEXTLINE(bugprone-exception-escape): no move of these members throws
struct ItemInside {
    std::string text;             // one line. Empty for a file.
    nlohmann::ordered_json json;  // null for a file, and if nothing could be read
    std::string fault;            // what is wrong with the item. Empty if nothing is.
};

// Returns the description of the item. Unpacks only a database or the registry.
ItemInside lookInside(const archive::OpenFile& data, const archive::Item& item);

}  // namespace quillbox_set
