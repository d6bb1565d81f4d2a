// item_names.h - enumerates the names of the items of one kind on the device, such as the databases. directory_walker.h
// enumerates files, and the registry is a single item.
#pragma once

#include "ce/types.h"

#include <functional>

// Calls visit(name) for each item of the kind (ItemKindDatabase and so on, set/item_kinds.h), in the device's order.
// Does nothing for files and the registry. The name is valid only during the call. For an item that no backup includes,
// such as a database of the system, the name is null.
void ForEachName(BYTE kind, const std::function<void(const WCHAR* name)>& visit);
