// report.h - what a command prints about a device, as lines of text or as one JSON object.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace quillbox_device {

class Report {
public:
    // The JSON object begins with its version, and with the lists that it has even if they are empty.
    Report(bool json, std::initializer_list<const char*> lists);

    // Prints the line, which must be safe to print, or adds the element to the list of that name.
    void add(const char* list, const nlohmann::ordered_json& element, const std::string& line);
    // A field of the object itself. The line is printed unless it is empty.
    void set(const char* name, const nlohmann::ordered_json& value, const std::string& line);
    // Prints the object.
    void finish() const;

private:
    bool json_;
    nlohmann::ordered_json object_;
};

}  // namespace quillbox_device
