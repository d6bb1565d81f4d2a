// item_names.h - the names of the items that the device has of a kind. Files are found by the walker instead
// (directory_walker.h), and the registry is a single item.
#pragma once

#include "ce/types.h"

#include <functional>

// Calls visit(name) for each item of this kind, in the device's order. Does nothing if the kind isn't enumerated. The
// name is valid during the call. It is null for an item that no backup takes.
void ForEachName(BYTE kind, const std::function<void(const WCHAR* name)>& visit);
