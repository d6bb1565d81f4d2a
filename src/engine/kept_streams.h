// kept_streams.h - the streams of tiny files that the listing of a full backup has packed, for the run after it.
//
// The listing opens each file to see whether it can be read. It packs a tiny one while it is open, and the run stores
// that stream if the file hasn't changed since. So such a file is opened once, not twice.
//
// The run's thread only. The bytes of a stream stay where they are until ForgetKeptStreams.
#pragma once

#include "set/small_stream.h"

// The largest file that is kept. Of larger ones the memory would hold few.
inline constexpr std::uint64_t MostKeptSourceBytes = 2048;

struct KeptStream {
    FileStamp source;   // from before the file was read
    const BYTE* bytes;  // KeptBytes(count) of the stream; null for none
    DWORD count;
    DWORD readBytes;  // of the source
    std::uint64_t digest;
};

// Whether there is room for further streams. They have 8 MB, which is enough for 200,000 files of a line of text.
bool IsRoomForKeptStream();

// Keeps a packed stream for the entry of gFileList with this number, counted from 0. The numbers ascend. Without room,
// or if the stamp can't prove that the file has not changed, the stream isn't kept.
void KeepStream(DWORD entry, const SmallStream& stream, const FileStamp& source);

// The stream that is kept for the entry, if any. The numbers ascend.
KeptStream FindKeptStream(DWORD entry);

// Frees the memory.
void ForgetKeptStreams();
