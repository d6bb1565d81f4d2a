#include "new_set.h"

#include "archive/fault_text.h"
#include "archive/long_work.h"
#include "archive/set_check.h"
#include "set/list_file.h"
#include "set/set_state.h"

#include "ce/file.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace quillbox_set {

using namespace archive;

namespace {

constexpr std::size_t PieceBytes = 262144;

// Copies bytes of the data file. Returns false if the bytes can't be read. If a write fails, returns true, and
// target.error() returns the reason.
bool copy(const OpenFile& data, std::uint64_t start, DWORD bytes, GrowingFile& target)
{
    auto high = static_cast<LONG>(start >> 32);
    (void)SetFilePointer(data.handle(), static_cast<LONG>(start), &high, FILE_BEGIN);
    std::vector<std::byte> piece(std::min<std::size_t>(PieceBytes, bytes));
    while (bytes > 0) {
        checkStop();
        DWORD read = 0;
        const auto wanted = static_cast<DWORD>(std::min<std::size_t>(piece.size(), bytes));
        if (!ReadFile(data.handle(), piece.data(), wanted, &read, nullptr) || read == 0)
            return false;
        if (!target.write(std::span(piece).first(read)))
            break;
        bytes -= read;
    }
    return true;
}

std::string moved(GrowingFile& file)
{
    return file.moveToTarget(false) == ERROR_SUCCESS ? "" : errorText(file.error());
}

}  // namespace

std::string NewSet::add(BYTE kind, const std::u16string& name, std::uint64_t start, std::uint64_t end)
{
    Item item{};
    item.entry.kind = kind;
    name.copy(item.entry.blob.name, NameChars - 1);
    const bool isRegistry = item.isRegistry();
    if (!isRegistry && (name.empty() || name.size() >= NameChars || !isUsableName(item)))
        return "its name can't be used in a set";
    if (isRegistry ? hasRegistry_ : names_.has(kind, name))
        return "the set has an item of this name already";
    if (bytes_ + (end - start) > std::numeric_limits<DWORD>::max())
        return "the set would have more than 4 GiB";
    if (isRegistry)
        hasRegistry_ = true;
    else
        names_.add(kind, name);
    bytes_ += end - start;
    entries_.push_back({kind, name, start, static_cast<DWORD>(end - start)});
    return "";
}

void NewSet::writeStreams(const OpenFile& data, GrowingFile& streams)
{
    std::erase_if(entries_, [&](const Entry& entry) {
        const std::uint64_t before = streams.bytes();
        const bool isRead = streams.error() != ERROR_SUCCESS || copy(data, entry.start, entry.bytes, streams);
        if (!isRead) {
            (void)streams.cut(before);
            unreadable_.push_back(entry.name);
        }
        return !isRead;
    });
}

std::string NewSet::writeList(HANDLE list, const std::u16string& comment) const
{
    if (!WriteListHead(list, comment.substr(0, CommentChars - 1).c_str()))
        return errorText(GetLastError());
    DWORD at = 0;
    for (const Entry& entry : entries_) {
        const DWORD failures = WriteEntryHead(list, entry.kind, entry.name.c_str(), at, nullptr, nullptr);
        at += entry.bytes;
        if (failures != 0 || !WriteEntryEnd(list, at))
            return errorText(GetLastError());
    }
    return "";
}

std::string NewSet::write(const OpenFile& data, const MountedSet& target, const std::u16string& comment)
{
    std::ranges::stable_sort(entries_, {}, &Entry::kind);
    GrowingFile streams(target.dataPath);
    writeStreams(data, streams);
    if (streams.error() != ERROR_SUCCESS)
        return errorText(streams.error());
    if (entries_.empty())
        return "there is no item for it";
    GrowingFile list(target.listPath);
    if (list.handle() == INVALID_HANDLE_VALUE)
        return errorText(list.error());
    if (std::string fault = writeList(list.handle(), comment); !fault.empty())
        return fault;
    // The list comes last, so that there is never a list without its data.
    if (std::string fault = moved(streams); !fault.empty())
        return fault;
    std::string fault = moved(list);
    if (!fault.empty())
        (void)DeleteFileW(target.dataPath.c_str());
    return fault;
}

}  // namespace quillbox_set
