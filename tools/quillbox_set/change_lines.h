// change_lines.h - prints the changes that a comparison finds, as text or JSON.
#pragma once

#include "archive/listed_set.h"
#include "archive/record_changes.h"
#include "archive/registry_values.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace quillbox_set {

// Returns "added", "removed" or "changed".
std::string_view nameOf(archive::Change change);

// Returns one line for each field, such as: LastName: "a" -> "b". A line break and `indent` precede each line.
std::string linesOf(const std::vector<archive::FieldChange>& fields, const std::string& indent);
nlohmann::ordered_json jsonOf(const std::vector<archive::FieldChange>& fields);

class ChangeLines {
public:
    explicit ChangeLines(bool json) : json_(json) {}

    // True if a change was printed.
    bool any() const { return any_; }

    void print(archive::Change change, const archive::Item& item);
    void printFile(const archive::Item& item, std::uint64_t bytesBefore, std::uint64_t bytesAfter);
    void printPatch(const std::string& patch);
    void printDatabase(const archive::Item& item, const archive::RecordCollector& before,
                       const archive::RecordCollector& after);
    void printRecord(const archive::Item& item, const archive::RecordChange& change);
    void printValue(const archive::RegistryPlace& place, const std::optional<std::string>& before,
                    const std::optional<std::string>& after);

private:
    void printItem(archive::Change change, const archive::Item& item, const nlohmann::ordered_json& more,
                   const std::string& text);

    bool json_;
    bool any_ = false;
};

}  // namespace quillbox_set
