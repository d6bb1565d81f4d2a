#include "archive/record_changes.h"

#include "archive/shown_value.h"
#include "database_formats/property_names.h"

#include "ce/personal_databases.h"
#include "text/host_name.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace archive {

namespace {

std::string textOf(std::span<const CEPROPVAL> record, CEPROPID id)
{
    const auto property = std::ranges::find(record, id, &CEPROPVAL::propid);
    if (property == record.end())
        return "";
    return LOWORD(id) == CEVT_LPWSTR ? platform::text::toUtf8(property->val.lpwstr) : shownValue(*property);
}

std::string joined(const std::string& left, const std::string& right)
{
    return left.empty() || right.empty() ? left + right : left + " " + right;
}

std::string titleOf(std::span<const CEPROPVAL> record, DWORD type)
{
    if (type != personal::ContactsType)
        return textOf(record, personal::Subject);
    const std::string name = joined(textOf(record, personal::FirstName), textOf(record, personal::LastName));
    return name.empty() ? textOf(record, personal::Company) : name;
}

std::string identityOf(std::span<const CEPROPVAL> record, DWORD type)
{
    const std::string title = titleOf(record, type);
    if (title.empty() ||
        (type != personal::ContactsType && type != personal::AppointmentsType && type != personal::TasksType))
        return "";
    return type == personal::AppointmentsType ? title + "\n" + textOf(record, personal::Start) : title;
}

// Returns the fields that differ, sorted by their names.
std::vector<FieldChange> fieldChanges(const std::vector<Field>& before, const std::vector<Field>& after)
{
    std::map<std::string, FieldChange> changes;
    for (const Field& field : before)
        changes[field.name] = {field.name, field.value, std::nullopt};
    for (const Field& field : after) {
        FieldChange& change = changes[field.name];
        change.name = field.name;
        change.after = field.value;
    }
    std::vector<FieldChange> found;
    for (const auto& [name, change] : changes) {
        if (change.before != change.after)
            found.push_back(change);
    }
    return found;
}

// Returns the records that have no counterpart with the same content in `others`.
std::vector<const RecordText*> unmatched(const std::vector<RecordText>& records, const std::vector<RecordText>& others)
{
    std::map<Digest, std::size_t> there;
    for (const RecordText& other : others)
        there[other.digest]++;
    std::vector<const RecordText*> found;
    for (const RecordText& record : records) {
        if (const auto same = there.find(record.digest); same != there.end() && same->second > 0)
            same->second--;
        else
            found.push_back(&record);
    }
    return found;
}

}  // namespace

std::vector<RecordChange> changesOf(const std::vector<RecordText>& before, const std::vector<RecordText>& after)
{
    std::multimap<std::string, const RecordText*> added;
    for (const RecordText* record : unmatched(after, before))
        added.emplace(record->identity, record);
    std::vector<RecordChange> changes;
    for (const RecordText* record : unmatched(before, after)) {
        const auto same = record->identity.empty() ? added.end() : added.find(record->identity);
        if (same == added.end()) {
            changes.push_back({Change::Removed, record->title, fieldChanges(record->fields, {})});
            continue;
        }
        changes.push_back({Change::Changed, record->title, fieldChanges(record->fields, same->second->fields)});
        added.erase(same);
    }
    for (const auto& [identity, record] : added)
        changes.push_back({Change::Added, record->title, fieldChanges({}, record->fields)});
    return changes;
}

std::vector<Digest> moreIn(std::vector<Digest> left, std::vector<Digest> right)
{
    std::ranges::sort(left);
    std::ranges::sort(right);
    std::vector<Digest> more;
    std::ranges::set_difference(left, right, std::back_inserter(more));
    return more;
}

void RecordCollector::head(const ImageReport& image)
{
    type_ = image.type;
    records_ = image.records;
    for (const SORTORDERSPEC& order : image.sortOrders)
        sortOrders_.emplace_back(order.propid, order.dwFlags);
}

void RecordCollector::record(unsigned number, std::span<const CEPROPVAL> properties)
{
    std::vector<CEPROPVAL> kept = restoredRecord(properties);
    if (kept.empty())
        return;
    digests.push_back(hasher_.hash(kept));
    if (!wanted_ || !wanted_(digests.back(), kept))
        return;
    std::ranges::sort(kept, {}, &CEPROPVAL::propid);
    RecordText text{digests.back(), shortText(titleOf(kept, type_)), identityOf(kept, type_), {}};
    if (text.title.empty())
        text.title = "record " + std::to_string(records_ - number + 1);
    for (const CEPROPVAL& property : kept) {
        const std::string flags = property.wFlags == 0 ? "" : " (flags " + std::to_string(property.wFlags) + ")";
        text.fields.push_back({database_formats::nameOf(property.propid), shownValue(property) + flags});
    }
    texts.push_back(std::move(text));
}

}  // namespace archive
