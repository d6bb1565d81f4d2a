#include "stored_attributes.h"

#include "known_attributes.h"

#include "ce/file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <string_view>

namespace platform::file {

namespace {

constexpr const char* AttributeName = "user.DOSATTRIB";

constexpr DWORD StoredBits = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                             FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_INROM | FILE_ATTRIBUTE_COMPRESSED |
                             FILE_ATTRIBUTE_ROMSTATICREF | FILE_ATTRIBUTE_ROMMODULE;

DWORD parseStored(std::string_view text)
{
    while (text.ends_with('\0'))  // file servers store the terminating NUL, too
        text.remove_suffix(1);
    if (!text.starts_with("0x"))
        return 0;
    text.remove_prefix(2);
    DWORD bits = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits, 16);
    return error == std::errc() && end == text.data() + text.size() ? bits & StoredBits : 0;
}

// `error` is the negative errno from reading the attribute of an entry. Returns true if the entry then counts as one
// without stored attributes. The list has the errors in this order: the entry has no such attribute; its value is too
// long to be valid; the file system has no extended attributes (three errors); this user may not read them (two
// errors); the entry is gone; the descriptor was opened with O_PATH.
bool meansNoAttribute(long error)
{
    constexpr std::array<long, 9> Reasons = {ENODATA, ERANGE, EOPNOTSUPP, ENOSYS, EINVAL, EACCES, EPERM, ENOENT, EBADF};
    return std::ranges::find(Reasons, -error) != Reasons.end();
}

}  // namespace

StoredAttributes storedAttributes(int folder, const char* name, const HostStatus& status)
{
    KnownAttributes& known = KnownAttributes::instance();
    if (const auto bits = known.find(status))
        return {*bits};
    const bool settled = KnownAttributes::isSettled(folder, status);
    std::array<char, 32> value{};  // valid values are shorter
    const ssize_t length = readExtended(folder, name, AttributeName, value);
    const DWORD bits = length > 0 ? parseStored({value.data(), static_cast<std::size_t>(length)}) : 0;
    if (settled && (length >= 0 || length == -ENODATA))
        known.note(status, bits);
    return {bits, length < 0 && !meansNoAttribute(length) ? static_cast<int>(length) : 0};
}

}  // namespace platform::file
