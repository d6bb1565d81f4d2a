// string_table.cpp - the program's texts by number.

#include "engine/questions.h"
#include "program.h"

#include "ce/resource.h"
#include "ce/text.h"

#include <algorithm>
#include <cstring>

WCHAR gTextA[TextChars];
WCHAR gTextB[TextChars];

WCHAR* LoadText(UINT id, WCHAR (&scratch)[TextChars])
{
    std::memset(scratch, 0, sizeof scratch);
    // With no buffer the text stays in the resource: unterminated, its length in the word before it.
    const auto* text = reinterpret_cast<const WCHAR*>(LoadStringW(gInstance, id, nullptr, 0));
    if (!text)
        return scratch;
    WORD characters = 0;
    std::memcpy(&characters, text - 1, sizeof characters);
    return wcsncpy(scratch, text, std::min<DWORD>(characters, TextChars - 1));
}
