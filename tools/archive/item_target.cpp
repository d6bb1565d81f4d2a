#include "archive/item_target.h"

#include "archive/fault_text.h"

#include "text/host_name.h"

#include "ce/error.h"

#include <filesystem>

namespace archive {

namespace {

bool isSafe(char16_t unit)
{
    return unit >= 0x20 && std::u16string_view(u"\\/*?\"<>|").find(unit) == std::u16string_view::npos;
}

// Replaces the characters that a file's name can't contain, such as a backslash. A database's name can contain them.
std::u16string safeName(std::u16string_view name)
{
    std::u16string safe;
    for (const char16_t unit : name)
        safe += isSafe(unit) ? unit : u'_';
    return safe;
}

}  // namespace

std::u16string targetOf(const Item& item, std::optional<database_formats::Format> format)
{
    const ItemKind& kind = KindOf(item.entry.kind);
    if (item.isFile())
        return std::u16string(item.name());
    if (!kind.list)
        return format ? u"\\registry.reg" : u"\\registry.reg-image";
    return u"\\" + safeName(item.name()) +
           (format && item.isDatabase() ? platform::text::fromUtf8(database_formats::extensionOf(*format))
                                        : kind.ending);
}

std::string targetFault(const Item& item)
{
    if (item.entry.faults & CutByEndOfFile)
        return "the list file ends inside it";
    if (!NameIsUsable(item.entry))
        return listFaultTexts(item.entry.faults, "its name").front();
    if (!IsItemKind(item.entry.kind))
        return "there is no such kind";
    return "";
}

std::optional<std::vector<std::string>> hostNamesOf(std::u16string_view target)
{
    if (target.size() >= MAX_PATH)
        return std::nullopt;
    if (target.starts_with(u'\\'))
        target.remove_prefix(1);
    std::vector<std::string> names;
    for (bool more = true; more;) {
        const std::size_t end = target.find(u'\\');
        const std::optional<std::string> name = platform::text::toHostName(target.substr(0, end));
        if (!name)
            return std::nullopt;
        names.push_back(*name);
        more = end != std::u16string_view::npos;
        target.remove_prefix(more ? end + 1 : target.size());
    }
    return names;
}

std::string hostPathOf(const std::string& folder, std::u16string_view target)
{
    std::filesystem::path path = folder;
    for (const std::string& name : hostNamesOf(target).value_or(std::vector<std::string>{}))
        path /= name;
    return path.string();
}

bool leadsInto(std::u16string_view path, std::u16string_view folder)
{
    if (path.starts_with(u'\\'))
        path.remove_prefix(1);
    return path.substr(0, path.find(u'\\')) == folder;
}

}  // namespace archive
