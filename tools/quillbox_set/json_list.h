// json_list.h - one JSON object with one long array in it, printed as it comes: a set may name millions of items.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace quillbox_set {

class JsonList {
public:
    // Prints the fields of `head`, an object, and begins the array.
    JsonList(const nlohmann::ordered_json& head, const std::string& arrayName);

    void add(const nlohmann::ordered_json& element);

    // Closes the array and prints the fields of `tail`.
    void end(const nlohmann::ordered_json& tail);

private:
    bool empty_ = true;
};

}  // namespace quillbox_set
