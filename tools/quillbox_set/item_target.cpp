#include "item_target.h"

#include "text/host_name.h"

namespace quillbox_set {

using namespace archive;

namespace {

bool isSafe(char16_t unit)
{
    return unit >= 0x20 && std::u16string_view(u"\\/*?\"<>|").find(unit) == std::u16string_view::npos;
}

// A database's name can contain characters that a file's name can't, such as a backslash.
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

bool leadsInto(std::u16string_view path, std::u16string_view folder)
{
    if (path.starts_with(u'\\'))
        path.remove_prefix(1);
    return path.substr(0, path.find(u'\\')) == folder;
}

}  // namespace quillbox_set
