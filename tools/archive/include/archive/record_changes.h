// record_changes.h - finds the differences between two states of the records of a database.
#pragma once

#include "archive/digest.h"
#include "archive/item_content.h"
#include "archive/record_content.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace archive {

struct Field {
    std::string name;   // "LastName"
    std::string value;  // short (shown_value.h)
};

struct RecordText {
    Digest digest;
    std::string title;     // "Berta Meyer", a subject, or "record 3"
    std::string identity;  // what identifies a contact, an appointment or a task. Empty for other records.
    std::vector<Field> fields;
};

// If only one of the two states has the field, there is no value for the other state.
struct FieldChange {
    std::string name;
    std::optional<std::string> before;
    std::optional<std::string> after;
};

enum class Change { Added, Removed, Changed };

struct RecordChange {
    Change change;
    std::string title;
    std::vector<FieldChange> fields;
};

// Returns the records that were added, removed or changed. Records with equal content are unchanged. Of the others, a
// record in `before` and a record in `after` count as one changed record if their identities are equal and not empty.
std::vector<RecordChange> changesOf(const std::vector<RecordText>& before, const std::vector<RecordText>& after);

// Compares how often each digest occurs in the two lists. A digest that occurs m times in `left` and n times in `right`
// occurs m - n times in the result, or not at all if n is m or more.
std::vector<Digest> moreIn(std::vector<Digest> left, std::vector<Digest> right);

// Collects the records of a database. Ignores records without properties, because a restore leaves them out.
class RecordCollector final : public ContentSink {
public:
    // Returns whether to store the text of the record. If `wanted` is empty, the collector stores only the digests,
    // which have 32 bytes each.
    using Wanted = std::function<bool(const Digest& digest, std::span<const CEPROPVAL> properties)>;

    explicit RecordCollector(Wanted wanted) : wanted_(std::move(wanted)) {}

    void head(const ImageReport& image) override;
    void record(unsigned number, std::span<const CEPROPVAL> properties) override;

    DWORD type() const { return type_; }
    // Each sort order is a pair of the property's id and the flags.
    const std::vector<std::pair<CEPROPID, DWORD>>& sortOrders() const { return sortOrders_; }

    std::vector<Digest> digests;
    std::vector<RecordText> texts;

private:
    Wanted wanted_;
    RecordHasher hasher_;
    DWORD type_ = 0;
    std::vector<std::pair<CEPROPID, DWORD>> sortOrders_;
    unsigned records_ = 0;
};

}  // namespace archive
