// report.h - prints what a command reports about a device, as lines of text or as one JSON object.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace quillbox_device {

class Report {
public:
    // The JSON object begins with its version and these lists. A list without elements is in the object too.
    Report(bool json, std::initializer_list<const char*> lists);

    // Prints the line, in which the caller has already replaced control characters. For JSON, adds the element to the
    // list `list` instead.
    void add(const char* list, const nlohmann::ordered_json& element, const std::string& line);
    // Prints the line unless it is empty. For JSON, sets a field of the object instead.
    void set(const char* name, const nlohmann::ordered_json& value, const std::string& line);
    // If the report is JSON, prints the object. If the report is text, does nothing.
    void finish() const;

private:
    bool json_;
    nlohmann::ordered_json object_;
};

}  // namespace quillbox_device
