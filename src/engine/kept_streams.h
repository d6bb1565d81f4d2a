// kept_streams.h - keeps packed streams of tiny files in memory. A backup packs them while it lists the files, before
// it stores any.
//
// While a backup lists the files of the device or of a folder, it opens each file to test whether the file can be read.
// If the file is tiny, the backup also packs it now, and keeps the stream. Later it stores this stream if the file
// hasn't changed since. So a tiny file is opened once, not twice.
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

// Keeps a packed stream for the entry of gFileList with the number `entry`, counted from 0. From call to call, `entry`
// must increase. The stream isn't kept if there is no room, or if the stream or its file is too large. It isn't kept
// either if the stamp can't show later whether the file has changed.
void KeepStream(DWORD entry, const SmallStream& stream, const FileStamp& source);

// Returns the stream that is kept for the entry with the number `entry`, if any. From call to call, `entry` must
// increase.
KeptStream FindKeptStream(DWORD entry);

// Frees the memory.
void ForgetKeptStreams();
