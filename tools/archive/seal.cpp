#include "archive/seal.h"

#include "archive/growing_file.h"
#include "archive/long_work.h"

#include "ce/file.h"

#include <array>
#include <string_view>

namespace archive {

namespace {

constexpr std::size_t PieceBytes = 262144;
constexpr std::uint64_t MostSealBytes = 65536;  // a real file of checksums has two lines
constexpr std::size_t DigitCount = 64;

// A line of a file in the format of sha256sum.
struct SumLine {
    Digest digest;
    std::string name;
};

std::string escaped(std::string_view name)
{
    std::string text;
    for (const char c : name)
        text += c == '\\' ? "\\\\" : c == '\n' ? "\\n" : c == '\r' ? "\\r" : std::string(1, c);
    return text;
}

std::string unescaped(std::string_view text)
{
    std::string name;
    for (std::size_t at = 0; at < text.size(); at++) {
        const bool escape = text[at] == '\\' && at + 1 < text.size();
        const char c = escape ? text[++at] : text[at];
        name += escape && c == 'n' ? '\n' : escape && c == 'r' ? '\r' : c;
    }
    return name;
}

std::string lineOf(const Digest& digest, const std::string& name)
{
    const std::string text = escaped(name);
    return (text == name ? "" : "\\") + hexadecimal(digest) + "  " + text + "\n";
}

std::optional<SumLine> parsed(std::string_view line)
{
    const bool isEscaped = line.starts_with('\\');
    line.remove_prefix(isEscaped ? 1 : 0);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    if (line.size() < DigitCount + 3 || line[DigitCount] != ' ')
        return std::nullopt;
    const auto digest = digestFrom(line.substr(0, DigitCount));
    if (!digest)
        return std::nullopt;
    const std::string_view name = line.substr(DigitCount + 2);  // after a blank, and a second blank or an asterisk
    return SumLine{*digest, isEscaped ? unescaped(name) : std::string(name)};
}

std::optional<std::string> readSeal(const OpenFile& file)
{
    const std::uint64_t size = file.size();
    if (size > MostSealBytes)
        return std::nullopt;
    std::string text(static_cast<std::size_t>(size), '\0');
    DWORD bytes = 0;
    if (!ReadFile(file.handle(), text.data(), static_cast<DWORD>(size), &bytes, nullptr) || bytes != size)
        return std::nullopt;
    return text;
}

// Returns the digest that the text has for the file `name`. The case of the name is ignored, because the names on a
// card can be in capitals or in small letters, depending on how the card is mounted.
std::optional<Digest> digestFor(std::string_view text, const std::string& name)
{
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const auto line = parsed(text.substr(0, end));
        if (line && isSameWithoutCase(line->name, name))
            return line->digest;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return std::nullopt;
}

// Returns nothing if the file can't be read to its end.
std::optional<Digest> digestOfFile(const std::u16string& path)
{
    const OpenFile file(path, GENERIC_READ, OPEN_EXISTING);
    if (!file.isOpen())
        return std::nullopt;
    Sha256 hash;
    std::vector<std::byte> piece(PieceBytes);
    for (std::uint64_t left = file.size(); left > 0;) {
        checkStop();
        DWORD bytes = 0;
        if (!ReadFile(file.handle(), piece.data(), static_cast<DWORD>(piece.size()), &bytes, nullptr) || bytes == 0)
            return std::nullopt;
        hash.add(std::span(piece).first(bytes));
        left -= std::min<std::uint64_t>(left, bytes);
    }
    return hash.finish();
}

void checkFile(std::string_view text, const std::string& name, const std::u16string& path, const std::string& what,
               std::vector<std::string>& faults)
{
    const auto sealed = digestFor(text, name);
    if (!sealed) {
        faults.push_back("the file with the checksums doesn't name " + what);
        return;
    }
    const auto found = digestOfFile(path);
    if (!found)
        faults.push_back(what + " can't be read to its end");
    else if (*found != *sealed)
        faults.push_back(what + " was changed since the set was sealed");
}

}  // namespace

SealCheck checkSeal(const SetFiles& files, const MountedSet& mounted)
{
    const OpenFile seal(mounted.sumPath, GENERIC_READ, OPEN_EXISTING);
    if (!seal.isOpen() && (GetLastError() == ERROR_FILE_NOT_FOUND || GetLastError() == ERROR_PATH_NOT_FOUND))
        return {};
    const auto text = seal.isOpen() ? readSeal(seal) : std::nullopt;
    if (!text)
        return {true, {"the file with the checksums can't be read"}};
    SealCheck check{true, {}};
    checkFile(*text, files.listName, mounted.listPath, "the list file", check.faults);
    checkFile(*text, files.dataName, mounted.dataPath, "the data file", check.faults);
    return check;
}

bool sealProvesData(const SetFiles& files, const MountedSet& mounted)
{
    const OpenFile seal(mounted.sumPath, GENERIC_READ, OPEN_EXISTING);
    const auto text = !files.sumName.empty() && seal.isOpen() ? readSeal(seal) : std::nullopt;
    const auto sealed = text ? digestFor(*text, files.dataName) : std::nullopt;
    return sealed && sealed == digestOfFile(mounted.dataPath);
}

std::optional<SetDigests> digestsOf(const MountedSet& mounted, const std::optional<FileDigest>& data)
{
    const auto list = digestOfFile(mounted.listPath);
    if (list && data && OpenFile(mounted.dataPath, GENERIC_READ, OPEN_EXISTING).size() == data->bytes)
        return SetDigests{*list, data->digest};
    const auto read = list ? digestOfFile(mounted.dataPath) : std::nullopt;
    return read ? std::optional(SetDigests{*list, *read}) : std::nullopt;
}

DWORD writeSeal(const SetFiles& files, const MountedSet& mounted, const SetDigests& digests)
{
    const std::string text = lineOf(digests.list, files.listName) + lineOf(digests.data, files.dataName);
    GrowingFile seal(mounted.sumPath);
    if (!seal.write(std::as_bytes(std::span(text))) || seal.moveToTarget(true) != ERROR_SUCCESS)
        return seal.error();
    return FlushChangedVolumes() ? ERROR_SUCCESS : GetLastError();
}

}  // namespace archive
