// piece_copy.h - copies a stream between the data file and a temporary file, in pieces of 260 bytes.
//
// A write that fails concerns one piece, and the next piece is tried. A read that gives nothing ends the copy. The
// counter of bytes follows each piece. For speed the platform gets many pieces in one call. If such a call fails, its
// pieces are tried one by one, so what is copied and logged is the same as if each piece had been read and written by
// itself.
#pragma once

#include "item_outcome.h"

#include "ce/file.h"

#include <algorithm>

inline constexpr DWORD PieceBytes = 260;

// Pieces in one call. The file layer gathers writes of up to 8 KB.
inline constexpr DWORD PiecesAtOnce = 31;

// Writes `count` bytes. Calls `failed` right after each write of a piece that fails, and copied(read, written) after
// each piece. The write of several pieces that fails counts for the piece in which it ended. It isn't repeated.
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

// Copies at most `most` bytes, fewer if `from` ends before. A failed read is noted in `item`.
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
