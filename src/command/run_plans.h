// run_plans.h - what the plans and summaries of the commands have in common.
#pragma once

#include "set/item_kinds.h"

#include "ce/command.h"

#include <string>

// The plan of a run that can't be performed. `sentence` says why. It is empty if the reason was reported by
// ce/outcome.h.
RunPlan RefusedPlan(const std::u16string& sentence);

// The items in the lists, the registry if gRegistryMarked is 1, and the bytes of the items whose sizes the lists have.
RunPlan PlanOfLists();

// Adds to the number of the items of this kind. A kind without a number of its own is counted with the kind in whose
// words it is reported.
void AddItems(ItemCounts& counts, const ItemKind& kind, DWORD items);
