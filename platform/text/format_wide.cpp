// FormatWide.
#include "ce/text.h"

#include "text/utf.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace {

using platform::text::decodeUtf8;
using platform::text::encodeUtf16;
using platform::text::isHighSurrogate;
using platform::text::isLowSurrogate;

// Widths and precisions are limited to this, which is longer than any buffer, so that they can't overflow.
constexpr std::size_t WidthLimit = 1U << 20;

// One conversion of a format: what is between the percent sign and the letter, and the letter.
struct Conversion {
    bool left = false;
    bool alternate = false;
    bool zeros = false;
    bool isShort = false;
    bool isLong = false;
    bool hasPrecision = false;
    std::size_t width = 0;
    std::size_t precision = 0;
    WCHAR letter = 0;
};

// The destination. Characters that don't fit are dropped.
class Output {
public:
    Output(WCHAR* out, std::size_t capacity) : begin_(out), at_(out), end_(out + capacity - 1) {}

    void put(WCHAR unit)
    {
        if (at_ != end_)
            *at_++ = unit;
        else if (!cutAt_)
            cutAt_ = unit;
    }
    void put(std::u16string_view text)
    {
        for (const WCHAR unit : text)
            put(unit);
    }
    void fill(WCHAR unit, std::size_t count)
    {
        for (count = std::min(count, static_cast<std::size_t>(end_ - at_) + 1); count > 0; --count)
            put(unit);
    }

    // Terminates the text and returns its length.
    int finish()
    {
        if (at_ != begin_ && isHighSurrogate(at_[-1]) && isLowSurrogate(cutAt_))
            --at_;
        *at_ = 0;
        return static_cast<int>(at_ - begin_);
    }

private:
    WCHAR* begin_;
    WCHAR* at_;
    WCHAR* end_;       // the last unit, reserved for the NUL
    WCHAR cutAt_ = 0;  // the first unit that didn't fit
};

std::size_t readNumber(const WCHAR*& format)
{
    std::size_t number = 0;
    for (; *format >= u'0' && *format <= u'9'; ++format)
        number = std::min(number * 10 + (*format - u'0'), WidthLimit);
    return number;
}

// Reads a conversion from after the percent sign, and moves `format` after the letter.
Conversion readConversion(const WCHAR*& format)
{
    Conversion conversion;
    for (;; ++format) {
        if (*format == u'-')
            conversion.left = true;
        else if (*format == u'#')
            conversion.alternate = true;
        else if (*format == u'0')
            conversion.zeros = true;
        else
            break;
    }
    conversion.width = readNumber(format);
    if (*format == u'.') {
        ++format;
        conversion.hasPrecision = true;
        conversion.precision = readNumber(format);
    }
    for (; *format == u'l' || *format == u'h'; ++format) {
        conversion.isLong = *format == u'l';
        conversion.isShort = *format == u'h';
    }
    conversion.letter = *format;
    if (conversion.letter != 0)
        ++format;
    return conversion;
}

void putPadded(Output& output, const Conversion& conversion, std::u16string_view text)
{
    const std::size_t padding = conversion.width > text.size() ? conversion.width - text.size() : 0;
    if (!conversion.left)
        output.fill(u' ', padding);
    output.put(text);
    if (conversion.left)
        output.fill(u' ', padding);
}

// The absolute value of the argument, read with the width and signedness of the conversion. Without h that is at least
// 32 bits, the width that C passes.
std::uint64_t magnitudeOf(const Conversion& conversion, const FormatArgument& argument, bool& negative)
{
    const bool isSigned = conversion.letter == u'd' || conversion.letter == u'i';
    std::int64_t value = argument.integer();
    if (conversion.isShort)
        value = isSigned ? std::int64_t{static_cast<std::int16_t>(value)} : std::int64_t{static_cast<WORD>(value)};
    else if (argument.bytes() <= 4)
        value = isSigned ? std::int64_t{static_cast<std::int32_t>(value)} : std::int64_t{static_cast<DWORD>(value)};
    negative = isSigned && value < 0;
    return negative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
}

void putInteger(Output& output, const Conversion& conversion, const FormatArgument& argument)
{
    bool negative = false;
    std::uint64_t value = magnitudeOf(conversion, argument, negative);
    const bool hexadecimal = conversion.letter == u'x' || conversion.letter == u'X';
    const bool prefixed = hexadecimal && conversion.alternate && value != 0;
    const WCHAR* letters = conversion.letter == u'X' ? u"0123456789ABCDEF" : u"0123456789abcdef";

    WCHAR digits[20];
    WCHAR* const end = digits + std::size(digits);
    WCHAR* first = end;
    if (hexadecimal)
        for (; value != 0; value >>= 4)
            *--first = letters[value & 15];
    else
        for (; value != 0; value /= 10)
            *--first = static_cast<WCHAR>(u'0' + value % 10);

    const auto digitCount = static_cast<std::size_t>(end - first);
    const std::size_t signCount = negative ? 1 : prefixed ? 2 : 0;
    std::size_t wanted = conversion.hasPrecision ? conversion.precision : 1;
    if (conversion.zeros && !conversion.left && !conversion.hasPrecision)
        wanted = std::max(wanted, conversion.width > signCount ? conversion.width - signCount : 0);
    const std::size_t zeros = wanted > digitCount ? wanted - digitCount : 0;
    const std::size_t whole = signCount + zeros + digitCount;
    const std::size_t padding = conversion.width > whole ? conversion.width - whole : 0;

    if (!conversion.left)
        output.fill(u' ', padding);
    if (negative)
        output.put(u'-');
    if (prefixed)
        output.put(std::u16string_view(conversion.letter == u'X' ? u"0X" : u"0x"));
    output.fill(u'0', zeros);
    output.put({first, digitCount});
    if (conversion.left)
        output.fill(u' ', padding);
}

// The number of characters to show: all, or as many whole ones as the precision allows.
std::size_t shownLength(const Conversion& conversion, const WCHAR* text)
{
    if (!conversion.hasPrecision)
        return wcslen(text);
    std::size_t length = 0;
    while (length < conversion.precision && text[length] != 0)
        ++length;
    if (length > 0 && length == conversion.precision && isHighSurrogate(text[length - 1]))
        --length;
    return length;
}

void putWide(Output& output, const Conversion& conversion, const WCHAR* text)
{
    if (text == nullptr)
        text = u"(null)";
    putPadded(output, conversion, {text, shownLength(conversion, text)});
}

void putNarrow(Output& output, const Conversion& conversion, const char* text)
{
    const std::size_t limit = conversion.hasPrecision ? conversion.precision : std::u16string::npos;
    if (text == nullptr)
        text = "(null)";
    std::u16string wide;
    for (std::string_view rest(text); !rest.empty();) {
        const auto decoded = decodeUtf8(rest);
        WCHAR units[2];
        const unsigned count =
            encodeUtf16(decoded.units == 0 ? platform::text::ReplacementCharacter : decoded.character, units);
        if (wide.size() + count > limit)
            break;
        wide.append(units, count);
        rest.remove_prefix(std::max(decoded.units, 1U));
    }
    putPadded(output, conversion, wide);
}

void putConversion(Output& output, const Conversion& conversion, const FormatArgument& argument)
{
    const bool small = conversion.letter == u's' || conversion.letter == u'c';
    const bool wide = conversion.isLong || (small && !conversion.isShort);
    using Kind = FormatArgument::Kind;
    switch (conversion.letter) {
    case u's':
    case u'S':
        if (argument.kind() == Kind::Wide && wide)
            putWide(output, conversion, argument.wide());
        else if (argument.kind() == Kind::Narrow && !wide)
            putNarrow(output, conversion, argument.narrow());
        break;
    case u'c':
    case u'C':
        if (argument.kind() == Kind::Integer) {
            // A NUL is left out, since it would end the text early.
            const WCHAR character = static_cast<WCHAR>(wide ? argument.integer() : argument.integer() & 0xFF);
            putPadded(output, conversion, {&character, character == 0 ? std::size_t{0} : std::size_t{1}});
        }
        break;
    default:
        if (argument.kind() == Kind::Integer)
            putInteger(output, conversion, argument);
        break;
    }
}

bool takesArgument(WCHAR letter)
{
    return std::u16string_view(u"diuxXcCsS").find(letter) != std::u16string_view::npos;
}

}  // namespace

int FormatWide(WCHAR* out, std::size_t capacity, const WCHAR* format, std::span<const FormatArgument> arguments)
{
    if (capacity == 0)
        return 0;
    Output output(out, capacity);
    while (*format != 0) {
        if (*format != u'%') {
            output.put(*format++);
            continue;
        }
        const Conversion conversion = readConversion(++format);
        if (!takesArgument(conversion.letter)) {
            if (conversion.letter != 0)
                output.put(conversion.letter);  // %% and unknown letters
        } else if (!arguments.empty()) {
            putConversion(output, conversion, arguments.front());
            arguments = arguments.subspan(1);
        }
    }
    return output.finish();
}
