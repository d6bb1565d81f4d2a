#include "engine/questions.h"

#include "ce/resource.h"
#include "ce/text.h"

#include <algorithm>
#include <cstring>

WCHAR gTextA[TextChars];
WCHAR gTextB[TextChars];

WCHAR* LoadText(UINT id, WCHAR (&scratch)[TextChars])
{
    std::memset(scratch, 0, sizeof scratch);
    // Without a buffer the call returns a pointer to the text in the resource. This text isn't terminated. The 16-bit
    // word before the text contains its length.
    const auto* text = reinterpret_cast<const WCHAR*>(LoadStringW(gInstance, id, nullptr, 0));
    if (!text)
        return scratch;
    WORD characters = 0;
    std::memcpy(&characters, text - 1, sizeof characters);
    return wcsncpy(scratch, text, std::min<DWORD>(characters, TextChars - 1));
}
