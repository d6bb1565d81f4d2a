// stream_files.h - opens, writes and closes the files of packing and unpacking, and notes the outcome of these calls.
#pragma once

#include "set/stream_outcome.h"

#include "ce/error.h"
#include "ce/file.h"

inline HANDLE OpenSource(const WCHAR* path)
{
    return CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

inline HANDLE OpenTarget(const WCHAR* path, DWORD creation = CREATE_ALWAYS)
{
    return CreateFileW(path, GENERIC_WRITE, 0, nullptr, creation, 0, nullptr);
}

// Notes the error of a call that has just failed. If the outcome already has an error, it stays unchanged.
inline void NoteFailure(StreamOutcome& outcome)
{
    const DWORD error = GetLastError();
    if (outcome.error == ERROR_SUCCESS)
        outcome.error = error != ERROR_SUCCESS ? error : ERROR_GEN_FAILURE;
}

inline void NoteFailure(StreamOutcome& outcome, DWORD error)
{
    SetLastError(error);
    NoteFailure(outcome);
}

struct Target {
    HANDLE file;
    StreamOutcome& outcome;
    bool cut;             // a write failed; nothing more is written, since a gap in the middle could go unnoticed
    std::uint64_t bytes;  // written so far
};

inline void Write(Target& target, const void* bytes, DWORD count)
{
    if (target.cut)
        return;
    DWORD written = 0;
    SetLastError(ERROR_SUCCESS);
    target.cut = !WriteFile(target.file, bytes, count, &written, nullptr) || written != count;
    target.bytes += written;
    if (target.cut)
        NoteFailure(target.outcome);
}

inline void CloseTarget(Target& target)
{
    target.cut |= !CloseHandle(target.file);  // writes the last bytes, which can fail
    if (target.cut)
        NoteFailure(target.outcome);
}
