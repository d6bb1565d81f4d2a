#include "engine/set_paths.h"

#include "ce/text.h"

namespace {

const WCHAR LongestTail[] = u"\\QUILBOX\\BACKUP9999.LOG";

}  // namespace

bool SetPathsFit(const WCHAR* root)
{
    return wcslen(root) + wcslen(LongestTail) < MAX_PATH;
}

void FormatSetFolder(WCHAR (&path)[MAX_PATH], const WCHAR* root)
{
    wsprintfW(path, u"%s\\QUILBOX", root);
}

void FormatListPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number)
{
    wsprintfW(path, u"%s\\QUILBOX\\QLBX%04d.QLT", root, number);
}

void FormatDataPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number)
{
    wsprintfW(path, u"%s\\QUILBOX\\QLBX%04d.QDT", root, number);
}

void FormatSumsPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number)
{
    wsprintfW(path, u"%s\\QUILBOX\\QLBX%04d.SUM", root, number);
}

void FormatLogPath(WCHAR (&path)[MAX_PATH], const WCHAR* root, DWORD number)
{
    wsprintfW(path, u"%s\\QUILBOX\\BACKUP%04d.LOG", root, number);
}

void FormatTemporaryPath(WCHAR (&path)[MAX_PATH], const WCHAR* root)
{
    wsprintfW(path, u"%s\\QUILBOX\\BKTMP.000", root);
}
