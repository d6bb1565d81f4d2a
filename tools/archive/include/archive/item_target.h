// item_target.h - computes the path of the file to which an item of a set is written.
#pragma once

#include "archive/listed_set.h"

#include "database_formats/database_format.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace archive {

// Returns the path of the item's file, relative to the root. For a file, the path is the item's name. For a database,
// the file name is the item's name with the extension of the format, such as NAME.jsonl. An underscore replaces each
// character of the name that no file name can contain. For the registry, the file name is registry.reg. Without a
// format, a database becomes NAME.CDB and the registry becomes registry.reg-image. These two files contain the unpacked
// bytes of the item without any conversion. The function doesn't check the item's name.
std::u16string targetOf(const Item& item, std::optional<database_formats::Format> format);

// Returns the reason why the item can't have a target path, or an empty text. Checks only the item's entry in the list
// file, not the content of the item.
std::string targetFault(const Item& item);

// Splits a target path into the names of its folders and of the file, and converts each of them to its name on the host
// (the Linux system). Returns at least one name, or nothing if the target can't be a path of the host.
std::optional<std::vector<std::string>> hostNamesOf(std::u16string_view target);

// Appends the names that hostNamesOf() returns for the target to `folder`, which is a path on the host. Returns the
// resulting path. hostNamesOf() must succeed for the target.
std::string hostPathOf(const std::string& folder, std::u16string_view target);

// True if `path` is the folder `folder` of the root, or is inside that folder.
bool leadsInto(std::u16string_view path, std::u16string_view folder);

}  // namespace archive
