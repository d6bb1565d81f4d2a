// write_set.cpp - a set by the program's own writers, without the program: write_set FOLDER NAME... packs the files
// FOLDER/NAME into FOLDER/S.QLT and FOLDER/S.QDT: as files, behind "--" as databases, or the registry by that name.

#include "set/compressed_stream.h"
#include "set/list_file.h"
#include "set/set_entry.h"

#include "file/name_space.h"
#include "text/host_name.h"

#include "ce/file.h"
#include "ce/handle.h"

#include <fcntl.h>

#include <string>

namespace {

constexpr DWORD pieceBytes = 260;

HANDLE make(const WCHAR* path)
{
    return CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
}

// Returns the bytes that were added.
DWORD append(HANDLE data, const WCHAR* streamPath)
{
    const HANDLE stream = CreateFileW(streamPath, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD total = 0;
    DWORD bytes = 0;
    BYTE piece[pieceBytes];
    while (ReadFile(stream, piece, pieceBytes, &bytes, nullptr) && bytes != 0) {
        DWORD written = 0;
        WriteFile(data, piece, bytes, &written, nullptr);
        total += written;
    }
    CloseHandle(stream);
    return total;
}

BYTE kindOf(std::u16string_view name, bool isFile)
{
    if (isFile)
        return ItemKindFile;
    return name == u"registry" ? ItemKindRegistry : ItemKindDatabase;
}

}  // namespace

int main(int count, char** arguments)
{
    const int folder = count > 1 ? open(arguments[1], O_RDONLY | O_DIRECTORY) : -1;
    if (!platform::file::addMount({u"", folder, false, std::nullopt}))
        return 2;
    const HANDLE list = make(u"\\S.QLT");
    const HANDLE data = make(u"\\S.QDT");
    BOOL good = WriteListHead(list, u"Backup date:24/11/2026 (21:33)\r\nComments:\r\nBy the program's writers");
    DWORD offset = 0;
    bool files = true;
    for (int i = 2; i < count; i++) {
        const std::u16string name = platform::text::fromUtf8(arguments[i]);
        if (name == u"--") {
            files = false;
            continue;
        }
        const std::u16string path = u"\\" + name;
        const BYTE kind = kindOf(name, files);
        good &= CompressFile(path.c_str(), u"\\stream");
        good &= WriteEntryHead(list, kind, (files ? path : name).c_str(), offset, nullptr, nullptr) == 0;
        offset += append(data, u"\\stream");
        good &= WriteEntryEnd(list, offset);
    }
    DeleteFileW(u"\\stream");
    CloseHandle(list);
    CloseHandle(data);
    return good ? 0 : 1;
}
