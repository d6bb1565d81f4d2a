#include "report.h"

#include <iostream>

namespace quillbox_device {

namespace {

using Json = nlohmann::ordered_json;

// The version of the JSON object. It changes when a field changes its name or its meaning.
constexpr int Version = 1;

}  // namespace

Report::Report(bool json, std::initializer_list<const char*> lists) : json_(json), object_{{"version", Version}}
{
    for (const char* list : lists)
        object_[list] = Json::array();
}

void Report::finish() const
{
    if (json_)
        std::cout << object_.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void Report::add(const char* list, const Json& element, const std::string& line)
{
    if (json_)
        object_[list].push_back(element);
    else
        std::cout << line << '\n';
}

void Report::set(const char* name, const Json& value, const std::string& line)
{
    if (json_)
        object_[name] = value;
    else if (!line.empty())
        std::cout << line << '\n';
}

}  // namespace quillbox_device
