#include "registry/registry_text_reader.h"

#include "text/case_folding.h"

#include "ce/registry.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

namespace platform::registry {

namespace {

constexpr std::size_t PieceBytes = 65536;
constexpr char16_t ByteOrderMark = 0xFEFF;
constexpr std::u16string_view Headline = u"Windows Registry Editor Version 5.00";
constexpr std::u16string_view OldHeadline = u"REGEDIT4";
constexpr std::u16string_view ClosingWords = u"; End of registry: ";
constexpr std::size_t LongestComment = 256;  // longer comments are cut; a closing line is shorter
// The length of the longest line of a key: all of its names have the greatest length, and an escape of six characters
// stands for each of their characters.
constexpr std::size_t LongestKeyLine = std::size_t{LevelLimit + 1} * (NameLimit + 1) * 6;

// Thrown inside this file only.
struct Fault {
    const char* what;
};
struct SinkEnded {};

bool isLineBreak(std::optional<char16_t> unit)
{
    return unit && (*unit == u'\r' || *unit == u'\n');
}

bool isBlank(std::optional<char16_t> unit)
{
    return unit && (*unit == u' ' || *unit == u'\t');
}

std::optional<unsigned> digitOf(std::optional<char16_t> unit)
{
    if (unit >= u'0' && unit <= u'9')
        return *unit - u'0';
    if (unit >= u'a' && unit <= u'f')
        return *unit - u'a' + 10;
    if (unit >= u'A' && unit <= u'F')
        return *unit - u'A' + 10;
    return std::nullopt;
}

bool sameWithoutCase(std::u16string_view left, std::u16string_view right)
{
    return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin(), [](auto a, auto b) {
               return text::foldCase(a) == text::foldCase(b);
           });
}

// Reads the text one code unit at a time.
class Units {
public:
    explicit Units(const RegistryTextSource& source) : source_(source), piece_(PieceBytes) {}

    // Returns the next code unit and stays before it. Returns nothing at the end.
    [[nodiscard]] std::optional<char16_t> next()
    {
        if (at_ == count_ && !refill())
            return std::nullopt;
        if (count_ - at_ < sizeof(char16_t))
            throw Fault{"the file ends in the middle of a character"};
        char16_t unit = 0;
        std::memcpy(&unit, &piece_[at_], sizeof(unit));
        return unit;
    }
    std::optional<char16_t> take()
    {
        const auto unit = next();
        if (unit) {
            at_ += sizeof(char16_t);
            line_ += *unit == u'\n' ? 1 : 0;
        }
        return unit;
    }
    bool takeIf(char16_t wanted)
    {
        const bool there = next() == wanted;
        if (there)
            (void)take();
        return there;
    }

    [[nodiscard]] std::size_t line() const { return line_; }

private:
    bool refill()
    {
        if (ended_)
            return false;
        at_ = 0;
        count_ = source_(piece_);
        ended_ = count_ < piece_.size();
        return count_ > 0;
    }

    const RegistryTextSource& source_;
    std::vector<std::byte> piece_;
    std::size_t at_ = 0;
    std::size_t count_ = 0;
    std::size_t line_ = 1;
    bool ended_ = false;
};

class Reader {
public:
    Reader(const RegistryTextSource& source, Wholeness wholeness, RegistryTextSink& sink)
        : units_(source), wholeness_(wholeness), sink_(sink)
    {
    }

    void read();
    [[nodiscard]] std::size_t line() const { return units_.line(); }

private:
    void readHeadline();
    void readComment();
    void readKey();
    void readValue();
    void readData(DWORD& type);
    void readBytes();
    void widenBytes();
    void readText();
    [[nodiscard]] std::u16string readName();
    [[nodiscard]] char16_t readQuotedUnit();
    [[nodiscard]] std::uint32_t readHexadecimal(unsigned fewest, unsigned most);
    void addByte(unsigned byte);
    void skipBlanks();
    void endLine();

    Units units_;
    Wholeness wholeness_;
    RegistryTextSink& sink_;
    std::vector<std::byte> data_;  // of the value that is read
    std::size_t keys_ = 0;
    bool hasKey_ = false;  // true if the last key wasn't deleted, so that values can follow
    bool old_ = false;     // true for version 4, where a text in hexadecimal digits has one byte for each character
    std::size_t values_ = 0;
    bool closed_ = false;
};

void Reader::read()
{
    readHeadline();
    for (skipBlanks(); units_.next(); skipBlanks()) {
        const char16_t first = *units_.next();
        if (closed_)
            throw Fault{"something follows the closing line"};
        if (isLineBreak(first))
            (void)units_.take();
        else if (first == u';')
            readComment();
        else if (first == u'[')
            readKey();
        else
            readValue();
    }
    if (wholeness_ == Wholeness::Required && !closed_)
        throw Fault{"the file is cut: its closing line is missing"};
}

void Reader::readHeadline()
{
    if (!units_.takeIf(ByteOrderMark))
        throw Fault{"the file is no UTF-16 text with a byte order mark; save it as a version 5.00 file"};
    old_ = wholeness_ == Wholeness::Free && units_.next() == OldHeadline.front();
    for (const char16_t expected : old_ ? OldHeadline : Headline)
        if (!units_.takeIf(expected))
            throw Fault{"the first line isn't that of a registry file"};
    endLine();
}

std::u16string closingLine(std::size_t keys, std::size_t values)
{
    std::u16string line(ClosingWords);
    const std::string numbers = std::to_string(keys) + " keys, " + std::to_string(values) + " values";
    line.append(numbers.begin(), numbers.end());
    return line;
}

void Reader::readComment()
{
    std::u16string comment;
    while (units_.next() && !isLineBreak(units_.next())) {
        const char16_t unit = *units_.take();
        if (comment.size() < LongestComment)
            comment.push_back(unit);
    }
    // A whole registry must have as many keys and values as its closing line says. A text with Wholeness::Free may have
    // been edited by hand, so its numbers may differ.
    if (wholeness_ == Wholeness::Free || !comment.starts_with(ClosingWords))
        return;
    if (comment != closingLine(keys_, values_))
        throw Fault{"the closing line tells other numbers of keys and values"};
    (void)units_.takeIf(u'\r');
    if (!units_.takeIf(u'\n'))
        throw Fault{"the file is cut in its closing line"};
    closed_ = true;
}

std::u16string unescapedLevel(std::u16string_view line, std::size_t& at)
{
    std::u16string level;
    while (at < line.size()) {
        if (line[at] != u'\\') {
            level.push_back(line[at++]);
            continue;
        }
        // An escape is two backslashes and four digits. So if there are three backslashes, the first one separates two
        // levels and the other two begin an escape.
        const std::u16string_view ahead = line.substr(at, 3);
        if (!ahead.starts_with(u"\\\\") || ahead == u"\\\\\\")
            break;
        at += 2;
        unsigned unit = 0;
        for (unsigned digits = 0; digits < 4; ++digits, ++at) {
            const auto digit = digitOf(at < line.size() ? std::optional(line[at]) : std::nullopt);
            if (!digit)
                throw Fault{"the key's name has a bad escape"};
            unit = unit * 16 + *digit;
        }
        if (unit == u'\\')
            throw Fault{"the key's name has a bad escape"};
        level.push_back(static_cast<char16_t>(unit));
    }
    if (level.empty() || level.size() > NameLimit || level.find(u'\0') != std::u16string::npos || !isText(level))
        throw Fault{"a name in the key's path is empty, too long or no text"};
    return level;
}

KeyPath pathOf(std::u16string_view line)
{
    KeyPath path;
    std::size_t at = 0;
    const std::u16string root = unescapedLevel(line, at);
    for (const std::u16string_view name : PredefinedNames) {
        ++path.root;
        if (sameWithoutCase(name, root))
            break;
        if (name == std::u16string_view(PredefinedNames[std::size(PredefinedNames) - 1]))
            throw Fault{"the key is below none of the predefined ones"};
    }
    while (at < line.size()) {
        ++at;  // the backslash
        path.levels.push_back(unescapedLevel(line, at));
        if (path.levels.size() > LevelLimit)
            throw Fault{"the key lies too deep"};
    }
    return path;
}

void Reader::readKey()
{
    (void)units_.take();
    std::u16string line;
    while (units_.next() && !isLineBreak(units_.next())) {
        line.push_back(*units_.take());
        if (line.size() > LongestKeyLine)
            throw Fault{"the key's path is too long"};
    }
    // A name may contain brackets, so the key ends at the last bracket of the line.
    const std::size_t end = line.find_last_not_of(u" \t");
    if (end == std::u16string::npos || line[end] != u']')
        throw Fault{"the key's bracket isn't closed"};
    line.resize(end);
    const bool removed = wholeness_ == Wholeness::Free && line.starts_with(u'-');
    const KeyPath path = pathOf(std::u16string_view(line).substr(removed ? 1 : 0));
    if (removed && path.levels.empty())
        throw Fault{"a predefined key can't be deleted"};
    endLine();
    ++keys_;
    hasKey_ = !removed;
    if (!(removed ? sink_.removedKey(path) : sink_.key(path)))
        throw SinkEnded{};
}

void Reader::readValue()
{
    if (!hasKey_)
        throw Fault{"there is no key before the value"};
    const std::u16string name = readName();
    skipBlanks();
    if (!units_.takeIf(u'='))
        throw Fault{"an equals sign is missing"};
    skipBlanks();
    DWORD type = REG_SZ;
    data_.clear();
    if (wholeness_ == Wholeness::Free && units_.takeIf(u'-')) {
        endLine();
        if (!sink_.removedValue(name))
            throw SinkEnded{};
        return;
    }
    if (units_.takeIf(u'"'))
        readText();
    else
        readData(type);
    endLine();
    ++values_;
    if (!sink_.value(name, type, data_))
        throw SinkEnded{};
}

std::u16string Reader::readName()
{
    if (units_.takeIf(u'@'))
        return {};
    if (!units_.takeIf(u'"'))
        throw Fault{"this is neither a key nor a value nor a comment"};
    std::u16string name;
    while (!units_.takeIf(u'"')) {
        name.push_back(readQuotedUnit());
        if (name.size() > NameLimit)
            throw Fault{"the value's name is too long"};
    }
    if (!isText(name))
        throw Fault{"the value's name is no text"};
    return name;
}

// Reads one unit inside quotes, where a line break is an ordinary character.
char16_t Reader::readQuotedUnit()
{
    const bool escaped = units_.takeIf(u'\\');
    const auto unit = units_.next();
    if (!unit)
        throw Fault{"a text isn't closed"};
    if (*unit == u'\0')
        throw Fault{"a text can't hold a NUL"};
    if (escaped && *unit != u'"' && *unit != u'\\')
        throw Fault{"a text has a bad escape"};
    (void)units_.take();
    return *unit;
}

void Reader::readText()
{
    while (!units_.takeIf(u'"')) {
        const unsigned unit = readQuotedUnit();
        addByte(unit & 0xFF);
        addByte(unit >> 8);
    }
    addByte(0);
    addByte(0);
}

void Reader::readData(DWORD& type)
{
    std::string kind;
    while (units_.next() && *units_.next() >= u'a' && *units_.next() <= u'z' && kind.size() < 8)
        kind.push_back(static_cast<char>(*units_.take()));
    if (kind != "hex" && kind != "dword")
        throw Fault{"the value is of no known form"};
    const bool number = kind == "dword";
    type = number ? REG_DWORD : REG_BINARY;
    if (!number && units_.takeIf(u'(')) {
        type = readHexadecimal(1, 8);
        if (!units_.takeIf(u')'))
            throw Fault{"the value's type isn't closed"};
    }
    if (!units_.takeIf(u':'))
        throw Fault{"a colon is missing"};
    if (!number) {
        readBytes();
        if (old_ && (type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ))
            widenBytes();
        return;
    }
    const std::uint32_t value = readHexadecimal(1, 8);
    for (unsigned shift = 0; shift < 32; shift += 8)
        addByte((value >> shift) & 0xFF);
}

void Reader::readBytes()
{
    bool first = true;
    for (;;) {
        skipBlanks();
        if (units_.takeIf(u'\\')) {  // continued in the next line
            skipBlanks();
            if (!isLineBreak(units_.next()))
                throw Fault{"a backslash doesn't end its line"};
            endLine();
            continue;
        }
        if (first && (!units_.next() || isLineBreak(units_.next())))
            return;  // no bytes at all
        first = false;
        addByte(readHexadecimal(2, 2));
        skipBlanks();
        if (!units_.takeIf(u','))
            return;
    }
}

void Reader::widenBytes()
{
    std::vector<std::byte> bytes;
    bytes.swap(data_);
    for (const std::byte byte : bytes) {
        if (byte >= std::byte{0x80})
            throw Fault{"a text in hexadecimal digits has a character that isn't ASCII; save the file as version 5.00"};
        addByte(std::to_integer<unsigned>(byte));
        addByte(0);
    }
}

std::uint32_t Reader::readHexadecimal(unsigned fewest, unsigned most)
{
    std::uint32_t number = 0;
    unsigned digits = 0;
    for (auto digit = digitOf(units_.next()); digit && digits < most; digit = digitOf(units_.next()), ++digits) {
        number = number * 16 + *digit;
        (void)units_.take();
    }
    if (digits < fewest)
        throw Fault{"a hexadecimal number is missing"};
    return number;
}

void Reader::addByte(unsigned byte)
{
    if (data_.size() == ValueBytesLimit)
        throw Fault{"the value is too large"};
    data_.push_back(static_cast<std::byte>(byte));
}

void Reader::skipBlanks()
{
    while (isBlank(units_.next()))
        (void)units_.take();
}

void Reader::endLine()
{
    skipBlanks();
    const bool broken = units_.takeIf(u'\r');
    if (!units_.takeIf(u'\n') && !broken && units_.next())
        throw Fault{"the line goes on where it should end"};
}

}  // namespace

std::optional<RegistryTextFault> readRegistryText(const RegistryTextSource& source, Wholeness wholeness,
                                                  RegistryTextSink& sink)
{
    Reader reader(source, wholeness, sink);
    try {
        reader.read();
        return std::nullopt;
    } catch (const Fault& fault) {
        return RegistryTextFault{reader.line(), fault.what, false};
    } catch (const SinkEnded&) {
        return RegistryTextFault{reader.line(), "it was not taken", true};
    }
}

}  // namespace platform::registry
