#include "item_path.h"

#include "engine/directory_walker.h"

#include "ce/text.h"

#include <cstring>

namespace {

// Writes `text` in front of the text that begins at `start`. If that text isn't empty, writes a backslash between the
// two. `first` is the beginning of the buffer. Returns the new start, or null if `text` doesn't fit.
WCHAR* Prepend(WCHAR* start, const WCHAR* first, const WCHAR* text)
{
    const std::size_t characters = wcslen(text);
    const std::size_t needed = characters + (*start ? 1 : 0);
    if (static_cast<std::size_t>(start - first) < needed)
        return nullptr;
    if (*start)
        *--start = u'\\';
    start -= characters;
    std::memcpy(start, text, characters * sizeof(WCHAR));
    return start;
}

// Returns the texts of the items from below "Files" down to this item, joined by backslashes. The loop goes upwards, so
// it writes into `names` from the end to the beginning. Returns null if an item can't be read or the texts don't fit.
const WCHAR* NamesOfItem(HTREEITEM handle, WCHAR (&names)[MAX_PATH])
{
    WCHAR* start = &names[MAX_PATH - 1];
    *start = 0;
    for (; handle; handle = NextTreeItem(TVGN_PARENT, handle)) {
        TreeItem item;
        if (!ReadTreeItem(handle, item, true))
            return nullptr;
        if (TreeCodeOf(item.parameter) == TreeCodeFilesRoot)
            continue;
        start = Prepend(start, names, item.text);
        if (!start)
            return nullptr;
    }
    return start;
}

BOOL FormatPathOfItem(HTREEITEM item, WCHAR (&path)[MAX_PATH], const WCHAR* format)
{
    path[0] = 0;
    WCHAR names[MAX_PATH];
    const WCHAR* found = item ? NamesOfItem(item, names) : nullptr;
    if (!found || wcslen(found) + 1 >= MAX_PATH)
        return FALSE;
    wsprintfW(path, format, found);
    return TRUE;
}

}  // namespace

BOOL FolderPathOfItem(HTREEITEM item, WCHAR (&path)[MAX_PATH])
{
    return FormatPathOfItem(item, path, u"%s\\");
}

BOOL FilePathOfItem(HTREEITEM item, WCHAR (&path)[MAX_PATH])
{
    return FormatPathOfItem(item, path, u"\\%s");
}

BOOL FullPathOfEntry(WCHAR (&path)[MAX_PATH], const WCHAR* folder, const WCHAR* name)
{
    if (folder[0] == u'\\')
        return JoinPath(path, folder, name);
    const std::size_t folderChars = wcslen(folder);
    const std::size_t nameChars = wcslen(name);
    if (1 + folderChars + nameChars >= MAX_PATH)
        return FALSE;
    path[0] = u'\\';
    std::memcpy(path + 1, folder, folderChars * sizeof(WCHAR));
    std::memcpy(path + 1 + folderChars, name, (nameChars + 1) * sizeof(WCHAR));
    return TRUE;
}
