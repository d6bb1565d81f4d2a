#include "set_tables.h"

#include "archive/name_set.h"
#include "archive/set_search.h"
#include "archive/shown_value.h"
#include "database_formats/property_names.h"
#include "database_formats/value_text.h"
#include "json_text.h"
#include "screen_text/screen_text.h"

#include "text/host_name.h"

#include "ce/file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace set_report {

using namespace archive;
using screen_text::onScreen;

namespace {

constexpr std::size_t MostWarnings = 100;         // that the page shows for one set
constexpr std::size_t MostBytesOfValue = 20'000;  // of a property; a longer value is cut

std::string shownName(std::u16string_view name)
{
    return onScreen(platform::text::toShown(name));
}

RowKey rowKey(const Digest& digest)
{
    RowKey key{};
    static_assert(sizeof key <= sizeof digest);
    std::memcpy(&key, digest.data(), sizeof key);
    return key;
}

RowKey rowKey(BYTE kind, std::u16string_view name)
{
    const NameHash hash(kind, name);
    return {hash.first, hash.second};
}

// Returns the value of a property as text. Keeps its line breaks, except one at the end.
std::string shownValue(const CEPROPVAL& property)
{
    const std::string text = LOWORD(property.propid) == CEVT_LPWSTR
                                 ? platform::text::toUtf8(property.val.lpwstr)
                                 : database_formats::valueText(property, database_formats::Controls::Kept);
    std::string lines = screen_text::linesOnScreen(platform::text::fromUtf8(shortText(text, MostBytesOfValue)), "");
    if (lines.ends_with('\n'))
        lines.pop_back();
    return lines;
}

std::span<const std::byte> bytesOf(std::u16string_view text)
{
    return std::as_bytes(std::span(text));
}

// Hashes the length before the text, so that two different lists of texts never have the same bytes.
void addText(Sha256& hash, std::u16string_view text)
{
    const std::uint64_t length = text.size();
    hash.add(std::as_bytes(std::span(&length, 1)));
    hash.add(bytesOf(text));
}

}  // namespace

std::size_t NumberedTexts::numberOf(const std::string& text)
{
    const auto [found, isNew] = numbers_.try_emplace(text, texts_.size());
    if (isNew)
        texts_.push_back(&found->first);
    return found->second;
}

void NumberedTexts::write(std::ostream& out) const
{
    out << '[';
    for (std::size_t at = 0; at < texts_.size(); at++)
        out << (at == 0 ? "" : ",") << *texts_[at];
    out << ']';
}

void ReportTables::beginSet(unsigned set)
{
    for (RunTable* table : {&items, &records, &values})
        table->beginSet(set);
}

nlohmann::ordered_json SetReading::read(const OpenedSet& set)
{
    {
        const OpenFile data(set.mounted().dataPath, GENERIC_READ, OPEN_EXISTING);
        dataBytes_ = data.isOpen() ? data.size() : 0;
    }
    const std::string comment = screen_text::linesOnScreen(set.list().comment(), "");
    const SetState state = checkSet(set, *this);
    finishItem();
    return {{"comment", comment},     {"items", state.items},     {"bytes", bytes_},
            {"packed", packedBytes_}, {"sealed", state.isSealed}, {"damaged", damagedItems_},
            {"faults", faults_},      {"warnings", warnings_},    {"warningCount", state.warnings}};
}

void SetReading::item(const Item& item)
{
    finishItem();
    hasItem_ = true;
    state_ = {item.entry.kind, std::u16string(item.shownName()), 0, -1, item.packedBytes(), ""};
    packedBytes_ += item.packedBytes();
}

void SetReading::fault(const Item* item, const std::string& reason)
{
    if (item == nullptr)
        faults_.push_back(onScreen(std::string_view(reason)));
    else
        state_.fault += (state_.fault.empty() ? "" : "; ") + onScreen(std::string_view(reason));
}

void SetReading::warning(const Item* item, const std::string& reason)
{
    if (warnings_.size() < MostWarnings)
        warnings_.push_back((item ? item->text() + ": " : "") + onScreen(std::string_view(reason)));
}

void SetReading::begin(const Item& item)
{
    progress_.at(item.entry.startOffset, dataBytes_);
    digests_.clear();
    key_.clear();
}

void SetReading::end(const Item& /*item*/, const ContentReport& content)
{
    std::ranges::sort(digests_);  // a restore may change the order of the records, so the digest ignores the order
    hash_.add(std::as_bytes(std::span(digests_)));
    const Digest digest = hash_.finish();
    if (!content.fault.empty())
        return;
    state_.content = contentNumber(digest);
    state_.bytes = static_cast<std::int64_t>(content.bytes);
    bytes_ += content.bytes;
}

void SetReading::finishItem()
{
    if (!std::exchange(hasItem_, false))
        return;
    damagedItems_ += state_.fault.empty() ? 0 : 1;
    tables_.items.add(
        rowKey(state_.kind, state_.name),
        [&] { return std::to_string(state_.kind) + "," + jsonString(shownName(state_.name)); },
        std::to_string(state_.content) + "," + std::to_string(state_.bytes) + "," + std::to_string(state_.packedBytes) +
            "," + (state_.fault.empty() ? "0" : jsonString(state_.fault)));
}

std::size_t SetReading::contentNumber(const Digest& digest)
{
    return tables_.contents.try_emplace(rowKey(digest), tables_.contents.size() + 1).first->second;
}

bool SetReading::bytes(std::span<const std::byte> piece)
{
    hash_.add(piece);
    return true;
}

void SetReading::head(const ImageReport& image)
{
    database_ =
        tables_.databases.numberOf("[" + jsonString(shownName(image.name)) + "," + std::to_string(image.type) + "]");
    hash_.add(std::as_bytes(std::span(&image.type, 1)));
    for (const SORTORDERSPEC& order : image.sortOrders) {
        const std::array<DWORD, 2> parts{order.propid, order.dwFlags};
        hash_.add(std::as_bytes(std::span(parts)));
    }
}

void SetReading::record(unsigned /*number*/, std::span<const CEPROPVAL> properties)
{
    const std::vector<CEPROPVAL> kept = restoredRecord(properties);
    if (kept.empty())
        return;
    digests_.push_back(records_.hash(kept));
    RowKey key = rowKey(digests_.back());
    key.second += database_;
    tables_.records.add(
        key, [&] { return headOf(kept); }, "");
}

std::string SetReading::headOf(std::span<const CEPROPVAL> record)
{
    std::string fields;
    for (const CEPROPVAL& property : record) {
        const std::size_t name = tables_.properties.numberOf(jsonString(database_formats::nameOf(property.propid)));
        fields += (fields.empty() ? "" : ",") + std::to_string(name) + "," + jsonString(shownValue(property));
    }
    return std::to_string(database_) + ",[" + fields + "]";
}

bool SetReading::key(const platform::registry::KeyPath& path)
{
    key_ = keyText(path);
    addText(hash_, key_);
    tables_.values.add(
        rowKey(0, key_), [&] { return jsonString(shownName(key_)) + ",null"; }, "0");
    return true;
}

bool SetReading::value(std::u16string_view name, DWORD type, std::span<const std::byte> data)
{
    addText(hash_, name);
    hash_.add(std::as_bytes(std::span(&type, 1)));
    hash_.add(data);
    const std::u16string place = key_ + u'\0' + std::u16string(name);
    tables_.values.add(
        rowKey(1, place), [&] { return jsonString(shownName(key_)) + "," + jsonString(shownName(name)); },
        jsonString(onScreen(std::string_view(shownRegistryValue(type, data)))));
    return true;
}

}  // namespace set_report
