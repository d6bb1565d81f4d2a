#include "run_plans.h"

#include "set/set_state.h"

RunPlan RefusedPlan(const std::u16string& sentence)
{
    RunPlan plan;
    plan.refused = true;
    plan.sentence = sentence;
    return plan;
}

RunPlan PlanOfLists()
{
    RunPlan plan;
    for (const ItemKind& kind : ItemKinds) {
        const ItemList* list = kind.list ? *kind.list : nullptr;
        AddItems(plan.items, kind, kind.list ? CountOf(list) : gRegistryMarked);
        plan.bytes += list ? list->ContentBytes() : 0;
    }
    return plan;
}

void AddItems(ItemCounts& counts, const ItemKind& kind, DWORD items)
{
    DWORD& count = kind.reportedAs == OutcomeFile       ? counts.files
                   : kind.reportedAs == OutcomeDatabase ? counts.databases
                                                        : counts.registries;
    count += items;
}
