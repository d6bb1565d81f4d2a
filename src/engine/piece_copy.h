// piece_copy.h - copies a stream between the data file and a temporary file, in pieces of 260 bytes.
//
// If the write of a piece fails, the remaining pieces are still written. A read that returns no bytes ends the copy.
// The callback `copied` is called after each piece. For speed one call of the platform reads or writes many pieces. If
// such a call fails, the remaining pieces are tried one by one. So the copied bytes and the log are the same as if each
// piece had been read and written by a call of its own.
#pragma once

#include "item_outcome.h"

#include "ce/file.h"

#include <algorithm>

inline constexpr DWORD PieceBytes = 260;

// The number of pieces in one call. Together these pieces are just below 8 KB, the size of the largest write that the
// file layer buffers.
inline constexpr DWORD PiecesAtOnce = 31;

// Writes `count` bytes. Calls `failed` right after each failed write. Calls copied(bytes, written) for each piece, with
// the size of the piece and the number of its bytes that were written. First, one call writes all pieces together. If
// it fails, only the piece in which the write ended is treated as failed. That piece isn't written again. The pieces
// after it are then written one by one.
template <class Failed, class Copied>
void WritePieces(HANDLE to, const BYTE* bytes, DWORD count, const Failed& failed, const Copied& copied)
{
    DWORD atOnce = count;
    while (count != 0) {
        const DWORD wanted = std::min(count, atOnce);
        DWORD written = 0;
        const bool whole = WriteFile(to, bytes, wanted, &written, nullptr) && written == wanted;
        if (!whole)
            failed();
        DWORD done = 0;
        while (done < wanted && (whole || done <= written)) {
            const DWORD piece = std::min(PieceBytes, wanted - done);
            copied(piece, std::min(piece, written - done));
            done += piece;
        }
        bytes += done;
        count -= done;
        if (!whole)
            atOnce = PieceBytes;
    }
}

// Copies `most` bytes, or fewer if `from` ends earlier. Notes a failed read in `item`.
template <class Failed, class Copied>
void CopyPieces(HANDLE from, HANDLE to, std::uint64_t most, ItemOutcome& item, const Failed& failed,
                const Copied& copied)
{
    BYTE pieces[PiecesAtOnce * PieceBytes];
    DWORD atOnce = sizeof pieces;
    while (most != 0) {
        DWORD bytes = 0;
        const bool read =
            ReadFile(from, pieces, static_cast<DWORD>(std::min<std::uint64_t>(atOnce, most)), &bytes, nullptr);
        if (!read)
            NoteFailure(item, GetLastError());
        if (!read && atOnce != PieceBytes)
            atOnce = PieceBytes;
        else if (bytes == 0)
            break;
        most -= bytes;
        WritePieces(to, pieces, bytes, failed, copied);
    }
}
