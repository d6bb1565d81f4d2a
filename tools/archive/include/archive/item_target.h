// item_target.h - the path of the file that an item becomes outside of its set.
#pragma once

#include "archive/listed_set.h"

#include "database_formats/database_format.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace archive {

// A path below the root. A file has its own name. A database has the extension of the format, such as NAME.jsonl, and
// each character that no file's name can contain is replaced. The registry is registry.reg. Without a format, the files
// have the bytes of the items in the set: NAME.CDB and registry.reg-image. The name isn't checked.
std::u16string targetOf(const Item& item, std::optional<database_formats::Format> format);

// Why the item has no target, by its entry alone. Empty if it has one.
std::string targetFault(const Item& item);

// The names on the host of the folders of a target and of the file itself. At least one. Nothing if it can't be a path
// of the host.
std::optional<std::vector<std::string>> hostNamesOf(std::u16string_view target);

// The path on the host of a target below the host's folder. The target must have names on the host.
std::string hostPathOf(const std::string& folder, std::u16string_view target);

// True if `path` is this folder of the root, or in it.
bool leadsInto(std::u16string_view path, std::u16string_view folder);

}  // namespace archive
