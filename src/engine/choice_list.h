// choice_list.h - the choices that a walk collects for the user (ChooseFromList), as a double-NUL list that grows.
#pragma once

#include "ce/types.h"

#include <vector>

// Texts with their NULs, one after the other, and an empty text after the last one.
struct ChoiceList {
    std::vector<WCHAR> characters = {0};
};

bool IsEmpty(const ChoiceList& list);

// Appends a text. An empty one would end the list and is left out.
void AddChoice(ChoiceList& list, const WCHAR* text);
