// run_plans.h - makes the plan of a backup or restore (RunPlan), and counts items by kind, for all commands.
#pragma once

#include "set/item_kinds.h"

#include "ce/command.h"

#include <string>

// Returns the plan of a run that can't be performed. `sentence` says why. If the reason was reported through
// ce/outcome.h, `sentence` is empty.
RunPlan RefusedPlan(const std::u16string& sentence);

// Returns the plan of a run with all items in gFileList and gDatabaseList, and with the registry if it is marked
// (gRegistryMarked). The plan's number of bytes is the sum of the sizes in these lists.
RunPlan PlanOfLists();

// Adds `items` to one of the numbers in `counts`: files, databases or registries. The kind's field `reportedAs` selects
// the number.
void AddItems(ItemCounts& counts, const ItemKind& kind, DWORD items);
