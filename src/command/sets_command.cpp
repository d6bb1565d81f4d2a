#include "ce/command.h"

#include "engine/directory_walker.h"
#include "engine/set_paths.h"
#include "run_plans.h"
#include "set/list_file.h"
#include "set/list_reader.h"
#include "storages.h"

#include "ce/file.h"
#include "ce/text.h"

#include <algorithm>

namespace {

// The ending of the file with a set's checksums, such as QLBX0001.SUM. `quillbox backup`
// (platform/device/command_backup.cpp) and `quillbox-set seal` write this file. Here only its existence is tested.
const WCHAR SealEnding[] = u"SUM";
constexpr std::size_t EndingChars = 3;

// Removes the two lines that the program puts in front of the user's text.
std::u16string UsersComment(const std::u16string& comment)
{
    const std::size_t first = comment.find(u"\r\n");
    const std::size_t second = first == std::u16string::npos ? first : comment.find(u"\r\n", first + 2);
    return second == std::u16string::npos ? comment : comment.substr(second + 2);
}

void ReadList(HANDLE list, SetSummary& summary)
{
    static ListReader reader;  // too large for the stack
    static ListEntry entry;
    WCHAR comment[CommentChars];
    StartListReader(reader, list);
    DWORD faults = ReadListHead(reader, comment);
    summary.comment = UsersComment(comment);
    while (ReadListEntry(reader, entry)) {
        AddItems(summary.items, KindOf(entry.kind), 1);
        faults |= entry.faults;
    }
    summary.damaged = faults != 0 || reader.readError != ERROR_SUCCESS || reader.bytesAfterEntries != 0;
}

BOOL CollectList(const WCHAR* name, const WCHAR* folder, DWORD attributes, UINT_PTR context)
{
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        reinterpret_cast<std::vector<std::u16string>*>(context)->push_back(std::u16string(folder) + name);
    return TRUE;
}

void FindSetsIn(const std::u16string& storage, std::vector<SetSummary>& sets)
{
    WCHAR folder[MAX_PATH];
    FormatSetFolder(folder, storage.c_str());
    WCHAR root[MAX_PATH];
    std::vector<std::u16string> lists;
    if (JoinPath(root, folder, u"\\"))
        WalkDirectory(root, u"*.QLT", FALSE, FALSE, CollectList, reinterpret_cast<UINT_PTR>(&lists));
    std::sort(lists.begin(), lists.end());
    for (const std::u16string& list : lists) {
        if (auto summary = SummaryOfSet(list.c_str()))
            sets.push_back(std::move(*summary));
    }
}

}  // namespace

std::optional<SetSummary> SummaryOfSet(const WCHAR* listPath)
{
    const HANDLE list = CreateFileW(listPath, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (list == INVALID_HANDLE_VALUE)
        return std::nullopt;
    SetSummary summary = {.listPath = listPath, .comment = {}, .written = {}, .items = {}};
    BY_HANDLE_FILE_INFORMATION information = {};
    (void)GetFileInformationByHandle(list, &information);
    summary.written = information.ftLastWriteTime;
    ReadList(list, summary);
    CloseHandle(list);
    WCHAR dataPath[MAX_PATH];
    DataPathOfList(dataPath, listPath);
    summary.damaged |= GetFileAttributesW(dataPath) == INVALID_FILE_ATTRIBUTES;
    const std::u16string seal = summary.listPath.substr(0, summary.listPath.size() - EndingChars) + SealEnding;
    summary.sealed = GetFileAttributesW(seal.c_str()) != INVALID_FILE_ATTRIBUTES;
    summary.bytes = information.nFileSizeLow + BytesOfFile(dataPath);
    return summary;
}

std::vector<SetSummary> FindSets(const std::optional<std::u16string>& storage)
{
    std::vector<SetSummary> sets;
    if (storage) {
        FindSetsIn(*storage, sets);
        return sets;
    }
    for (const std::u16string& card : Cards())
        FindSetsIn(card, sets);
    FindSetsIn(u"", sets);
    return sets;
}
