#include "ce/text.h"

#include "text/utf.h"

#include <algorithm>
#include <string_view>

namespace {

using platform::text::isHighSurrogate;
using platform::text::isLowSurrogate;

// The largest width of a conversion. A larger number in the format is cut to this value, so the calculation of the
// width can't overflow.
constexpr std::size_t WidthLimit = 1U << 20;

// One conversion of a format: whether it pads with zeros, its width, and its letter.
struct Conversion {
    bool zeros = false;
    std::size_t width = 0;
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

// Reads the conversion that follows a percent sign. Moves `format` to the position after the letter.
Conversion readConversion(const WCHAR*& format)
{
    Conversion conversion;
    conversion.zeros = *format == u'0';
    for (; *format >= u'0' && *format <= u'9'; ++format)
        conversion.width = std::min(conversion.width * 10 + (*format - u'0'), WidthLimit);
    conversion.letter = *format;
    if (conversion.letter != 0)
        ++format;
    return conversion;
}

// Returns the absolute value of the argument. %d takes the argument as signed, and every other conversion takes it as
// unsigned. An argument of up to 4 bytes is read as 32 bits, because C passes it with 32 bits.
std::uint64_t magnitudeOf(const Conversion& conversion, const FormatArgument& argument, bool& negative)
{
    const bool isSigned = conversion.letter == u'd';
    std::int64_t value = argument.integer();
    if (argument.bytes() <= 4)
        value = isSigned ? std::int64_t{static_cast<std::int32_t>(value)} : std::int64_t{static_cast<DWORD>(value)};
    negative = isSigned && value < 0;
    return negative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
}

void putInteger(Output& output, const Conversion& conversion, const FormatArgument& argument)
{
    bool negative = false;
    std::uint64_t value = magnitudeOf(conversion, argument, negative);
    const unsigned base = conversion.letter == u'x' ? 16 : 10;

    WCHAR digits[20];
    WCHAR* const end = digits + std::size(digits);
    WCHAR* first = end;
    do {
        *--first = u"0123456789abcdef"[value % base];
        value /= base;
    } while (value != 0);

    const std::size_t length = static_cast<std::size_t>(end - first) + (negative ? 1 : 0);
    const std::size_t padding = conversion.width > length ? conversion.width - length : 0;
    if (!conversion.zeros)
        output.fill(u' ', padding);
    if (negative)
        output.put(u'-');
    if (conversion.zeros)
        output.fill(u'0', padding);
    output.put({first, static_cast<std::size_t>(end - first)});
}

void putText(Output& output, const Conversion& conversion, const WCHAR* text)
{
    const std::u16string_view shown = text ? text : u"(null)";
    output.fill(u' ', conversion.width > shown.size() ? conversion.width - shown.size() : 0);
    output.put(shown);
}

bool takesArgument(WCHAR letter)
{
    return letter == u's' || letter == u'd' || letter == u'u' || letter == u'x';
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
            continue;
        }
        if (arguments.empty())
            continue;
        const FormatArgument& argument = arguments.front();
        if (conversion.letter == u's' && argument.isText())
            putText(output, conversion, argument.text());
        else if (conversion.letter != u's' && !argument.isText())
            putInteger(output, conversion, argument);
        arguments = arguments.subspan(1);
    }
    return output.finish();
}
