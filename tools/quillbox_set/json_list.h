// json_list.h - prints a JSON object that contains one array, element by element. The array can have millions of
// elements.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace quillbox_set {

// The version is the first field of each outermost object that a command prints. It changes when another field changes
// its name or its meaning.
inline constexpr int JsonVersion = 1;

class JsonList {
public:
    // Begins the object: prints the field "version" with JsonVersion, and then the fields of `head`, which must be an
    // object. Then begins the array.
    JsonList(const nlohmann::ordered_json& head, const std::string& arrayName);

    void add(const nlohmann::ordered_json& element);

    // Closes the array and prints the fields of `tail`.
    void end(const nlohmann::ordered_json& tail);

private:
    bool empty_ = true;
};

}  // namespace quillbox_set
