// run_log.h - the plain-text log that a backup can leave beside its set: one line a step or failure.
#pragma once

#include "ce/file.h"
#include "ce/text.h"

// Longest message and longest line, in characters, and longest line in bytes, each with its NUL. What is longer is cut
// at a whole character; the line's own end always stands.
inline constexpr DWORD LogChars = 260;
inline constexpr DWORD LogBytes = 260;

// Nothing of it ever stops a run: a log that can't be made or written loses its lines and no more.
class BackupLog {
public:
    // Makes the file anew if gOptions.generateLog is on, otherwise touches nothing.
    explicit BackupLog(const WCHAR* path);
    BackupLog(const BackupLog&) = delete;
    BackupLog& operator=(const BackupLog&) = delete;
    ~BackupLog() = default;

    // Writes one line at once. 0 when nothing was written.
    template <class... Arguments>
    BOOL Write(const WCHAR* format, const Arguments&... arguments)
    {
        if (!IsOn())
            return FALSE;
        WCHAR message[LogChars];
        wsprintfW(message, format, arguments...);
        return WriteLine(message);
    }

    void Close();

private:
    [[nodiscard]] bool IsOn() const;
    BOOL WriteLine(const WCHAR* message);

    HANDLE handle = INVALID_HANDLE_VALUE;
};
