#include "shown_sets.h"

#include "archive/set_date.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

namespace quillbox_mount {

namespace {

constexpr std::uint64_t MiB = std::uint64_t{1024} * 1024;
constexpr std::uint64_t BlocksLimit = 64 * MiB;
constexpr std::uint64_t StreamsLimit = 32 * MiB;
constexpr std::uint64_t TextsLimit = 256 * MiB;  // on the disk, in unnamed files (set_reading.h)
// Limits on the files that one call of measureAfter() measures. One answer to a listing has fewer files than
// MostMeasured, so one call usually measures all files of the next answer. Measuring this many files and bytes takes no
// noticeable time.
constexpr std::uint32_t MostMeasured = 1024;
constexpr std::uint64_t MostMeasuredBytes = 4 * MiB;
constexpr std::uint64_t MostTexts = 256;  // the most texts in the cache. Each also keeps a descriptor open.

std::time_t timeOf(const archive::SetDate& date)
{
    std::tm local{};
    local.tm_year = date.year - 1900;
    local.tm_mon = static_cast<int>(date.month) - 1;
    local.tm_mday = static_cast<int>(date.day);
    local.tm_hour = static_cast<int>(date.hour);
    local.tm_min = static_cast<int>(date.minute);
    local.tm_isdst = -1;
    return std::mktime(&local);
}

std::uint64_t keyOf(std::uint32_t set, std::uint32_t node)
{
    return std::uint64_t{set} << 32 | node;
}

// Sets `size` to `now` if `size` is 0 or larger than `now`. If another thread has set a smaller value in the meantime,
// keeps that value.
void lower(std::atomic<std::uint64_t>& size, std::uint64_t now)
{
    for (std::uint64_t known = size; known == 0 || known > now;) {
        if (size.compare_exchange_weak(known, now))
            return;
    }
}

}  // namespace

ShownSets::ShownSets(const std::vector<archive::SetFiles>& sets)
    : blocks_(BlocksLimit), streams_(StreamsLimit), texts_(TextsLimit)
{
    archive::SetDates dates(sets);
    for (std::size_t at = 0; at < sets.size(); at++) {
        const archive::SetDate& date = dates.of(at);
        const bool isKnown = date.source != archive::DateSource::FileTime;
        const std::time_t time = isKnown ? timeOf(date) : static_cast<std::time_t>(dates.written(at) / 1'000'000'000);
        add(sets[at], isKnown ? date.text().substr(0, date.text().find(' ')) + ' ' : "", time);
    }
}

void ShownSets::add(const archive::SetFiles& files, const std::string& date, std::time_t time)
{
    std::string number = std::filesystem::path(files.listName).stem().string();
    if (number == "." || number == "..")
        number = files.listName;
    const std::string first = date + number;
    std::string name = first;
    for (int same = 2; std::ranges::find(sets_, name, &Shown::name) != sets_.end(); same++)
        name = first + " (" + std::to_string(same) + ")";
    sets_.emplace_back(static_cast<std::uint32_t>(sets_.size() + 1), files, name, time);
    newest_ = std::max(newest_, time);
}

void ShownSets::readSingle()
{
    if (sets_.size() == 1)
        (void)load(sets_.front());
}

ShownSets::Loaded* ShownSets::load(Shown& set)
{
    if (Loaded* const loaded = set.loaded.load(std::memory_order_acquire))
        return loaded;
    const platform::kernel::MutexLock lock(loading_);
    if (set.owned)
        return set.owned.get();
    DataFile data(set.files);
    auto tree = reading_.readTree(set.files);
    if (!tree || data.mayOpenLater() || !data.isStill(set.files))
        return nullptr;
    set.owned = std::make_unique<Loaded>(std::move(tree), std::move(data));
    set.loaded.store(set.owned.get(), std::memory_order_release);
    return set.owned.get();
}

int ShownSets::find(Place folder, std::string_view name, Place& found)
{
    if (folder.isTop()) {
        const auto set = std::ranges::find(sets_, name, &Shown::name);
        if (set == sets_.end())
            return ENOENT;
        found = {set->number, SetTree::root};
        return 0;
    }
    const Loaded* const loaded = load(shown(folder));
    if (!loaded)
        return EIO;
    const auto node = loaded->tree->child(folder.node, name);
    found = {folder.set, node.value_or(0)};
    return node ? 0 : ENOENT;
}

int ShownSets::attributes(Place place, Sizes sizes, Attributes& found)
{
    found = {true, 0, newest_, true};
    if (place.isTop())
        return 0;
    Shown& set = shown(place);
    found.changed = set.time;
    if (place.node == SetTree::root)
        return 0;
    Loaded* const loaded = load(set);
    if (!loaded)
        return EIO;
    if (place.node >= loaded->tree->size())
        return ENOENT;
    const Node::Kind kind = loaded->tree->node(place.node).kind;
    found.isFolder = kind == Node::Kind::Folder;
    found.areFinal = sizes == Sizes::All ||
                     (sizes == Sizes::IfQuick && (kind != Node::Kind::Text || loaded->sizes[place.node] != 0));
    if (!found.isFolder && found.areFinal)
        found.bytes = sizeOf(set, *loaded, place.node);
    found.areFinal = found.areFinal && (kind != Node::Kind::Text || loaded->sizes[place.node] != 0);
    return 0;
}

void ShownSets::measureAfter(Place place)
{
    Shown& set = shown(place);
    Loaded* const loaded = load(set);
    if (!loaded)
        return;
    const std::uint32_t end = std::min(loaded->tree->size() - 1, place.node + MostMeasured) + 1;
    std::uint32_t node = loaded->measuredEnd;
    if (node <= place.node || node > end)
        node = place.node + 1;
    for (std::uint64_t bytes = 0; node < end && bytes < MostMeasuredBytes && !ends_; node++) {
        const Node& file = loaded->tree->node(node);
        if (file.kind != Node::Kind::File)
            continue;
        bytes += file.endOffset - file.startOffset;
        (void)sizeOf(set, *loaded, node);
    }
    loaded->measuredEnd = node;
}

std::uint64_t ShownSets::sizeOf(const Shown& set, Loaded& loaded, std::uint32_t node)
{
    std::atomic<std::uint64_t>& size = loaded.sizes[node];
    std::uint64_t made = 0;
    if (size == 0) {
        const Node& file = loaded.tree->node(node);
        if (file.kind == Node::Kind::Note)
            made = file.content.size() + 1;
        else if (file.kind == Node::Kind::File)
            made = streamOf(set, loaded, node)->size() + 1;
        else if (const auto text = textOf(set, loaded, node); text->file)
            made = text->bytes + 1;
        else
            return text->bytes;
        lower(size, made);
    }
    return size - 1;
}

int ShownSets::child(Place folder, std::size_t index, Child& found)
{
    if (folder.isTop()) {
        if (index >= sets_.size())
            return ENOENT;
        found = {{sets_[index].number, SetTree::root}, sets_[index].name};
        return 0;
    }
    const Loaded* const loaded = load(shown(folder));
    if (!loaded)
        return EIO;
    const auto& children = loaded->tree->node(folder.node).children;
    if (index >= children.size())
        return ENOENT;
    found = {{folder.set, children[index]}, loaded->tree->node(children[index]).name};
    return 0;
}

Place ShownSets::parent(Place place)
{
    if (place.isTop() || place.node == SetTree::root)
        return {};
    const Loaded* const loaded = load(shown(place));
    return {place.set, loaded ? loaded->tree->node(place.node).parent : SetTree::root};
}

int ShownSets::read(Place file, std::uint64_t offset, std::uint64_t bytes, Content& content)
{
    Shown& set = shown(file);
    Loaded* const loaded = load(set);
    if (!loaded)
        return EIO;
    const Node& node = loaded->tree->node(file.node);
    if (node.kind == Node::Kind::File) {
        const auto stream = streamOf(set, *loaded, file.node);
        const bool isRead = stream->read(offset, bytes, content.pieces);
        // The size of a stream can be too large until a read has reached the end. This read may have reached it.
        lower(loaded->sizes[file.node], stream->size() + 1);
        return isRead ? 0 : EIO;
    }
    if (node.kind == Node::Kind::Text) {
        content.text = textOf(set, *loaded, file.node);
        return content.text->file ? 0 : EIO;
    }
    content.note = std::string_view(node.content).substr(std::min<std::uint64_t>(offset, node.content.size()), bytes);
    return 0;
}

bool ShownSets::readSmall(Place file, std::uint64_t most, Content& content)
{
    const Loaded* const loaded = load(shown(file));
    if (!loaded || file.node >= loaded->tree->size() || loaded->tree->node(file.node).kind != Node::Kind::File)
        return false;
    const std::uint64_t size = loaded->sizes[file.node];
    return size != 0 && size - 1 <= most && read(file, 0, size - 1, content) == 0;
}

std::shared_ptr<SeekableStream> ShownSets::streamOf(const Shown& set, const Loaded& loaded, std::uint32_t node)
{
    if (auto kept = streams_.find(keyOf(set.number, node)))
        return kept;
    const Node& file = loaded.tree->node(node);
    auto made =
        std::make_shared<SeekableStream>(loaded.data, file.startOffset, file.endOffset, set.number, blocks_, ends_);
    return streams_.add(keyOf(set.number, node), made, made->memoryBytes());
}

// Two threads may write the same text, one after the other. This wastes time but has no other effect.
std::shared_ptr<const ItemText> ShownSets::textOf(const Shown& set, const Loaded& loaded, std::uint32_t node)
{
    if (auto kept = texts_.find(keyOf(set.number, node)))
        return kept;
    if (streamOf(set, loaded, node)->isDamaged())
        return std::make_shared<const ItemText>();
    auto made = std::make_shared<const ItemText>(reading_.writeText(loaded.data, loaded.tree->node(node)));
    if (!made->file)
        return made;  // not cached, so that the next call tries again: there may be room for the text then
    return texts_.add(keyOf(set.number, node), made, made->bytes + TextsLimit / MostTexts);
}

}  // namespace quillbox_mount
