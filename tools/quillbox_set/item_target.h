// item_target.h - where an item is put when it is taken out of a set, and which items are meant by a name.
#pragma once

#include "listed_set.h"

#include "database_formats/database_format.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillbox_set {

// A path below the root: a file under its own name; a database in its format, such as NAME.jsonl, with what no file's
// name may hold replaced, and the registry as registry.reg. Without a format both are taken as they lie in the set:
// NAME.CDB and registry.reg-image. The platform decides whether the name can be used.
[[nodiscard]] std::u16string targetOf(const Item& item, std::optional<database_formats::Format> format);

// Whether `path` leads into this folder of the root.
[[nodiscard]] bool leadsInto(std::u16string_view path, std::u16string_view folder);

}  // namespace quillbox_set
