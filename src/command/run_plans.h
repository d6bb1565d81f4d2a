// run_plans.h - makes the plans of runs and counts items, for all commands.
#pragma once

#include "set/item_kinds.h"

#include "ce/command.h"

#include <string>

// Returns the plan of a run that can't be performed. `sentence` says why. If the reason was reported through
// ce/outcome.h, `sentence` is empty.
RunPlan RefusedPlan(const std::u16string& sentence);

// Returns the plan of a run with the items in the lists, and with the registry if gRegistryMarked is 1. The plan's
// number of bytes is the sum of the sizes in the lists.
RunPlan PlanOfLists();

// Adds `items` to the number in `counts` that belongs to the kind under which such items are reported
// (ItemKind::reportedAs).
void AddItems(ItemCounts& counts, const ItemKind& kind, DWORD items);
