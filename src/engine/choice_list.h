// choice_list.h - defines the list of choices that ChooseFromList shows to the user. The choices are added one by one,
// most of them during a walk (directory_walker.h).
#pragma once

#include "ce/types.h"

#include <vector>

// Texts with their NULs, one after the other, and an empty text after the last one.
struct ChoiceList {
    std::vector<WCHAR> characters = {0};
};

bool IsEmpty(const ChoiceList& list);

// Appends a text. An empty text is left out, since it would end the list.
void AddChoice(ChoiceList& list, const WCHAR* text);
