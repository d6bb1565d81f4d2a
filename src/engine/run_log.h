// run_log.h - declares the log that a backup can write beside its set: a text file with one line for each step or
// failure.
#pragma once

#include "ce/file.h"
#include "ce/text.h"

// LogChars is the size of the longest message in characters. LogBytes is the size of the longest line in bytes. Both
// include the NUL, and LogBytes also includes the line end. If a line is too long, its text is cut between two
// characters, so that the line end fits.
inline constexpr DWORD LogChars = 260;
inline constexpr DWORD LogBytes = 260;

// If the log can't be created or written, its lines are lost, but the run continues.
class BackupLog {
public:
    // Creates the file, or replaces an old one, if gOptions.generateLog is on.
    explicit BackupLog(const WCHAR* path);
    BackupLog(const BackupLog&) = delete;
    BackupLog& operator=(const BackupLog&) = delete;
    ~BackupLog() = default;

    // Writes one line and passes it to the host (the Linux system), so that a killed run doesn't lose it. Returns 0 if
    // the line couldn't be written or passed to the host, if the log is off, or if its file couldn't be created.
    // Otherwise returns 1.
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
