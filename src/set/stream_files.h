// stream_files.h - opens the source and the target of packing and unpacking, and writes and closes the target.
// NoteFailure stores the first error in a StreamOutcome.
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

// Stores the last error in the outcome, unless the outcome already has an error. If the last error is 0, stores
// ERROR_GEN_FAILURE.
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
    bool cut;             // a call failed; no write follows it, since a gap in the middle could go unnoticed
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
