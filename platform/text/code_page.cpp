// GetACP and WideCharToMultiByte.
#include "ce/text.h"

#include "text/utf.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

int fail(DWORD error)
{
    SetLastError(error);
    return 0;
}

}  // namespace

UINT GetACP()
{
    return CP_UTF8;
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* text, int characters, char* out, int bytes,
                        const char* defaultCharacter, BOOL* usedDefault)
{
    using namespace platform::text;
    if (flags != 0)
        return fail(ERROR_INVALID_FLAGS);
    if ((codePage != CP_ACP && codePage != CP_UTF8) || text == nullptr || characters == 0 || characters < -1 ||
        bytes < 0 || (bytes > 0 && out == nullptr) || defaultCharacter != nullptr || usedDefault != nullptr)
        return fail(ERROR_INVALID_PARAMETER);

    std::u16string_view rest(text, characters == -1 ? wcslen(text) + 1 : static_cast<std::size_t>(characters));
    const auto room = static_cast<std::size_t>(bytes > 0 ? bytes : std::numeric_limits<int>::max());
    std::size_t written = 0;
    while (!rest.empty()) {
        const Decoded decoded = decodeUtf16(rest);
        char encoded[4];
        const unsigned length = encodeUtf8(decoded.units == 0 ? ReplacementCharacter : decoded.character, encoded);
        if (length > room - written)
            return fail(ERROR_INSUFFICIENT_BUFFER);
        if (bytes > 0)
            std::memcpy(out + written, encoded, length);
        written += length;
        rest.remove_prefix(std::max(decoded.units, 1U));
    }
    return static_cast<int>(written);
}
