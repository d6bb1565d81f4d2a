// kept_streams.h - keeps in memory the streams that the listing of a full backup has packed from tiny files.
//
// The listing opens each file to test whether it can be read. While a tiny file is open, the listing also packs it. The
// run that follows stores this stream if the file hasn't changed since. So a tiny file is opened once, not twice.
//
// All calls are made on the run's thread. The bytes of a stream don't move until ForgetKeptStreams.
#pragma once

#include "set/small_stream.h"

// The size of the largest file whose stream is kept. Only few streams of larger files would fit into the memory.
inline constexpr std::uint64_t MostKeptSourceBytes = 2048;

struct KeptStream {
    FileStamp source;   // stamp from before the file was read
    const BYTE* bytes;  // the KeptBytes(count) bytes that differ from stream to stream; null if no stream is kept
    DWORD count;
    DWORD readBytes;  // bytes that were read from the source
    std::uint64_t digest;
};

// Whether there is room for further streams. All streams together can take 8 MB. This is enough for 200,000 files with
// one line of text each.
bool IsRoomForKeptStream();

// Keeps a packed stream for the entry of gFileList with the number `entry`, counted from 0. The numbers must ascend
// from call to call. The stream isn't kept if there is no room, or if the stream or its file is too large. It isn't
// kept either if the stamp can't show later whether the file has changed.
void KeepStream(DWORD entry, const SmallStream& stream, const FileStamp& source);

// Returns the stream that is kept for the entry, if any. The numbers must ascend from call to call.
KeptStream FindKeptStream(DWORD entry);

// Frees the memory.
void ForgetKeptStreams();
