// run_log.h - the log that a backup can write beside its set: a text file with one line for each step or failure.
#pragma once

#include "ce/file.h"
#include "ce/text.h"

// The longest message and line in characters, and the longest line in bytes, each with its NUL. A longer one is cut at
// a whole character, before the line end.
inline constexpr DWORD LogChars = 260;
inline constexpr DWORD LogBytes = 260;

// A log that can't be created or written loses its lines. It never ends the run.
class BackupLog {
public:
    // Creates the file, or replaces an old one, if gOptions.generateLog is on.
    explicit BackupLog(const WCHAR* path);
    BackupLog(const BackupLog&) = delete;
    BackupLog& operator=(const BackupLog&) = delete;
    ~BackupLog() = default;

    // Writes one line, which is in the file when the call returns. 0 if nothing was written.
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
