// refused_plan.h - the plan of a run that can't be performed.
#pragma once

#include "ce/command.h"

#include <string>

// `sentence` says why. It is empty if the reason was reported by ce/outcome.h.
inline RunPlan RefusedPlan(const std::u16string& sentence)
{
    RunPlan plan;
    plan.refused = true;
    plan.sentence = sentence;
    return plan;
}
