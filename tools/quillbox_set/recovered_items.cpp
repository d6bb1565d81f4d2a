#include "recovered_items.h"

#include "archive/fault_text.h"
#include "archive/item_content.h"
#include "archive/item_target.h"
#include "database_file.h"
#include "set/item_kinds.h"

#include "ce/file.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace quillbox_set {

using namespace archive;

namespace {

// Returns whether the bytes can be the head of a database image. A stream that begins with such bytes is read a second
// time, as an image. Few other streams begin like an image, so few are read twice without need.
bool looksLikeImage(std::span<const std::byte> head)
{
    DWORD nameBytes = 0;
    if (head.size() < sizeof nameBytes)
        return false;
    std::memcpy(&nameBytes, head.data(), sizeof nameBytes);
    const std::size_t units = nameBytes / sizeof(char16_t);
    if (units < 2 || units > NameChars || nameBytes % sizeof(char16_t) != 0 ||
        head.size() < sizeof nameBytes + nameBytes)
        return false;
    std::u16string name(units, u'\0');
    std::memcpy(name.data(), head.data() + sizeof nameBytes, nameBytes);
    return name.find(u'\0') == units - 1;
}

bool isPrintable(std::u16string_view name)
{
    return std::ranges::none_of(name, [](char16_t unit) { return unit < u' '; });
}

bool looksLikeRegistry(std::span<const std::byte> head)
{
    constexpr std::u16string_view FirstLine = u"\xFEFFWindows Registry Editor Version 5.00";
    const auto bytes = std::as_bytes(std::span(FirstLine));
    return head.size() >= bytes.size() && std::ranges::equal(head.first(bytes.size()), bytes);
}

}  // namespace

std::optional<database_formats::Format> RecoveredItems::Content::format() const
{
    const bool isImage = kind == ItemKindDatabase && image.tooLarge != 0;
    return isImage ? std::nullopt : std::optional(database_formats::Format::JsonLines);
}

RecoveredItems::RecoveredItems(const OpenFile& data, const MountedSet& mounted, OldLists& lists, Wanted wanted,
                               RecoveryReport& report)
    : data_(data), mounted_(mounted), lists_(lists), wanted_(wanted), report_(report)
{
    targets_.add(0, ReportPath);
    progress_.begin("salvage");
}

void RecoveredItems::begin(const FoundStream& stream)
{
    progress_.at(stream.start, data_.size());
    file_.emplace(u"\\recovered");
    head_.clear();
    sound_.reset();
}

void RecoveredItems::bytes(const FoundStream& stream, std::span<const std::byte> raw)
{
    if (stream.rawBytes == raw.size() && stream.hasMagic && (looksLikeImage(raw) || looksLikeRegistry(raw)))
        sound_.emplace();
    if (sound_ && stream.damagedBlocks == 0)
        sound_->add(raw);
    if (head_.size() < FileTypes::HeadBytes) {
        const auto more = raw.first(std::min(raw.size(), FileTypes::HeadBytes - head_.size()));
        head_.insert(head_.end(), more.begin(), more.end());
    }
    (void)file_->write(raw);
}

void RecoveredItems::end(const FoundStream& stream)
{
    OldEntry* entry = stream.hasMagic ? lists_.of(stream.start, stream.end, stream.isWhole()) : nullptr;
    Content content = contentOf(stream, entry ? entry->kind : BYTE{0});
    if (entry && content.kind != entry->kind) {  // so the entry is damaged, or belongs to another data file
        entry = nullptr;
        content = contentOf(stream, 0);
    }
    RecoveredItem item;
    item.stream = stream;
    item.kind = content.kind;
    if (stream.isWhole() && content.fault.empty())
        item.state = stream.isProven ? Recovery::Complete : Recovery::Unproven;
    if (entry) {
        entry->isFound = true;
        item.name = entry->name;
    } else if (content.kind != ItemKindFile) {
        item.name = content.kind == ItemKindDatabase ? content.image.name : u"registry";
    }
    item.damage = content.fault + (content.format() ? "" : "; its image is kept as it is");
    // The name in an entry is reserved for the stream to which the entry belongs. A stream without an entry can contain
    // a copy of the same item, with the same name. The copy doesn't get this name.
    const bool isNamed = entry || !lists_.hasName(item.kind, item.name);
    write(item, content, isNamed);
    addToSet(item, isNamed);
    file_.reset();
    progress_.clear();
    report_.add(item);
}

// Returns what the content of the stream is. `claimed` is the kind in the stream's list entry, or 0 if it has no entry.
// Content that begins like a database or the registry counts as this kind if `claimed` is the same kind or 0. Such
// content with a fault must also meet these conditions:
//
// - If the stream has no entry, the stream must not be whole.
// - A database must have at least one complete record. If its stream has no entry, the name of the database must also
//   be printable.
//
// All other content counts as a file.
RecoveredItems::Content RecoveredItems::contentOf(const FoundStream& stream, BYTE claimed)
{
    const OpenFile* const file = sound_ ? sound_->finish() : nullptr;
    const auto mayBe = [&](BYTE kind) { return file && (claimed == 0 || claimed == kind); };
    if (mayBe(ItemKindDatabase) && looksLikeImage(head_)) {
        ImageReport image = checkImage(*file, sound_->item(ItemKindDatabase).entry);
        const bool isRead = image.ends.size() > 1 && (claimed != 0 || (!stream.isWhole() && isPrintable(image.name)));
        if (image.fault.empty() || isRead)
            return {ItemKindDatabase, image.fault, std::move(image)};
    }
    if (mayBe(ItemKindRegistry) && looksLikeRegistry(head_)) {
        ContentSink ignored;
        const std::string fault = readContent(*file, sound_->item(ItemKindRegistry), ignored).fault;
        if (fault.empty() || claimed != 0 || !stream.isWhole())
            return {ItemKindRegistry, fault, {}};
    }
    return {ItemKindFile, "", {}};
}

void RecoveredItems::write(RecoveredItem& item, const Content& content, bool isNamed)
{
    if (file_->error() != ERROR_SUCCESS) {
        item.fault = errorText(file_->error());
        return;
    }
    const std::u16string known = isNamed ? knownTarget(item, content) : u"";
    if (!known.empty())
        writeTo(known, item, content);
    // The item has no usable path of its own, or the file couldn't be written to that path.
    if (item.target.empty())
        writeTo(newTarget(content), item, content);
}

void RecoveredItems::writeTo(const std::u16string& target, RecoveredItem& item, const Content& content)
{
    std::string fault;
    const auto format = content.format();
    if (content.kind == ItemKindDatabase && format) {
        std::optional<std::uint64_t> bytes;
        fault = writeDatabaseFile(*sound_->finish(), sound_->item(item.kind).entry, content.image,
                                  {*format, target, false}, bytes);
        item.bytes = bytes.value_or(0);
    } else {
        file_->setTarget(target);
        if (file_->moveToTarget(false) != ERROR_SUCCESS)
            fault = errorText(file_->error());
        item.bytes = file_->bytes();
    }
    item.fault = fault;
    if (!fault.empty())
        return;
    item.target = target;
    targets_.add(0, target);
}

// Returns the path that follows from the item's name. Empty if the item has no name, or if the path can't be used.
std::u16string RecoveredItems::knownTarget(const RecoveredItem& item, const Content& content) const
{
    if (item.name.empty())
        return u"";
    Item named{};
    named.entry.kind = item.kind;
    item.name.copy(named.entry.blob.name, NameChars - 1);
    std::u16string target = targetOf(named, content.format());
    const bool isPath = target.starts_with(u'\\') && !leadsInto(target, mounted_.folder.substr(1)) &&
                        !leadsInto(target, ReportPath.substr(1));
    return isPath && isFree(target) ? target : u"";
}

std::u16string RecoveredItems::newTarget(const Content& content)
{
    const std::u16string extension = content.kind == ItemKindDatabase
                                         ? (content.format() ? u".jsonl" : KindOf(content.kind).ending)
                                     : looksLikeRegistry(head_) ? u".reg"
                                                                : types_.extensionOf(head_);
    std::u16string target;
    do {
        std::array<char, 32> name{};
        (void)std::snprintf(name.data(), name.size(), "\\recovered-%04u", ++numbered_);
        target = std::u16string(name.data(), name.data() + std::strlen(name.data())) + extension;
    } while (!isFree(target));
    return target;
}

bool RecoveredItems::isFree(const std::u16string& target) const
{
    return !targets_.has(0, target) && GetFileAttributesW(target.c_str()) == INVALID_FILE_ATTRIBUTES;
}

void RecoveredItems::addToSet(RecoveredItem& item, bool isNamed)
{
    if (wanted_ == Wanted::Nothing)
        return;
    if (item.state == Recovery::Partial)
        item.notInSet = "it is damaged";
    else if (item.state == Recovery::Unproven && wanted_ == Wanted::Complete)
        item.notInSet = "it is unproven";
    else if (!isNamed)
        item.notInSet = "its name is that of another item in a list";
    else
        item.notInSet =
            set_.add(item.kind, item.name.empty() ? item.target : item.name, item.stream.start, item.stream.end);
}

}  // namespace quillbox_set
