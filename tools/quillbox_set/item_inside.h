// item_inside.h - what stands in a database or the registry of a set, told to whoever lists it.
#pragma once

#include "listed_set.h"

#include <nlohmann/json.hpp>

#include <string>

namespace quillbox_set {

struct ItemInside {
    std::string text;             // one line; empty for an item that has no inside
    nlohmann::ordered_json json;  // null for such an item, and where nothing could be read
    std::string fault;            // what is wrong with it, if anything is
};

// Unpacks the item.
[[nodiscard]] ItemInside lookInside(const OpenFile& data, const Item& item);

}  // namespace quillbox_set
