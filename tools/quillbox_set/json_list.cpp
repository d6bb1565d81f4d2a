#include "json_list.h"

#include <iostream>

namespace quillbox_set {

namespace {

std::string dumped(const nlohmann::ordered_json& value)
{
    return value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

void printFields(const nlohmann::ordered_json& object, std::string_view before, std::string_view after)
{
    for (const auto& field : object.items())
        std::cout << before << dumped(field.key()) << ": " << dumped(field.value()) << after;
}

}  // namespace

JsonList::JsonList(const nlohmann::ordered_json& head, const std::string& arrayName)
{
    std::cout << "{\n";
    printFields({{"version", JsonVersion}}, "  ", ",\n");
    printFields(head, "  ", ",\n");
    std::cout << "  " << dumped(arrayName) << ": [";
}

void JsonList::add(const nlohmann::ordered_json& element)
{
    std::cout << (empty_ ? "\n    " : ",\n    ") << dumped(element);
    empty_ = false;
}

void JsonList::end(const nlohmann::ordered_json& tail)
{
    std::cout << (empty_ ? "]" : "\n  ]");
    printFields(tail, ",\n  ", "");
    std::cout << "\n}\n";
}

}  // namespace quillbox_set
