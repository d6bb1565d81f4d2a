#include "run_log.h"

#include "ce/time.h"
#include "engine/options.h"

#include <cstring>

namespace {

const char LineEnd[] = " \r\n";
constexpr DWORD LineEndBytes = sizeof LineEnd - 1;

// Returns how many bytes of `text` fit into `room` without cutting a character. The device's code page is UTF-8. In
// UTF-8 each byte of a character after its first byte is 10xxxxxx.
DWORD WholeBytes(const char* text, DWORD bytes, DWORD room)
{
    if (bytes <= room)
        return bytes;
    while (room > 0 && (static_cast<BYTE>(text[room]) & 0xC0) == 0x80)
        room--;
    return room;
}

// Replaces a control character by its picture (U+2400 and on). The name of a file can have line breaks, which would
// look like further lines of the log.
WCHAR PictureOf(WCHAR character)
{
    constexpr WCHAR Pictures = 0x2400;
    constexpr WCHAR DeletePicture = 0x2421;
    constexpr WCHAR NewlinePicture = 0x2424;
    if (character < 0x20)
        return static_cast<WCHAR>(Pictures + character);
    if (character == 0x7F)
        return DeletePicture;
    const bool breaksLines = character == 0x85 || character == 0x2028 || character == 0x2029;
    return breaksLines ? NewlinePicture : character;
}

void ShowControlCharacters(WCHAR* text)
{
    for (; *text; text++)
        *text = PictureOf(*text);
}

}  // namespace

BackupLog::BackupLog(const WCHAR* path)
{
    if (gOptions.generateLog)
        handle = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
}

bool BackupLog::IsOn() const
{
    return gOptions.generateLog && handle != INVALID_HANDLE_VALUE;
}

BOOL BackupLog::WriteLine(const WCHAR* message)
{
    SYSTEMTIME now;
    GetLocalTime(&now);
    WCHAR line[LogChars];
    // Leaves room for the line end.
    wnsprintfW(line, LogChars - LineEndBytes, u"LOG(%02d:%02d:%02d): %s", now.wHour, now.wMinute, now.wSecond, message);
    ShowControlCharacters(line);

    // The limit LogBytes is in bytes, and a character takes up to 3 bytes. So the line is converted first and then cut.
    char bytes[LogChars * 3];
    const int converted = WideCharToMultiByte(GetACP(), 0, line, -1, bytes, sizeof bytes, nullptr, nullptr);
    if (converted == 0)
        return FALSE;
    DWORD count = WholeBytes(bytes, static_cast<DWORD>(converted) - 1, LogBytes - 1 - LineEndBytes);
    std::memcpy(bytes + count, LineEnd, LineEndBytes);
    count += LineEndBytes;

    DWORD written = 0;
    // After this call the line is in the file even if the process is killed.
    return WriteFile(handle, bytes, count, &written, nullptr) && HandOverFileBuffers(handle);
}

void BackupLog::Close()
{
    if (IsOn()) {
        (void)FlushFileBuffers(handle);
        CloseHandle(handle);
    }
    handle = INVALID_HANDLE_VALUE;
}
