// choice_list.h - a double-NUL list that grows: the choices that a walk of the device collects for the user.
#pragma once

#include "ce/types.h"

#include <vector>

// NUL-terminated texts one behind the other, closed by an empty one. Holds as many as there are: 99 sets on a card are
// nothing unusual.
struct ChoiceList {
    std::vector<WCHAR> characters = {0};
};

bool IsEmpty(const ChoiceList& list);

// Adds a text behind the others; an empty one would end the list and is left out.
void AddChoice(ChoiceList& list, const WCHAR* text);
