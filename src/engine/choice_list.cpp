#include "choice_list.h"

#include "ce/text.h"

bool IsEmpty(const ChoiceList& list)
{
    return list.characters.front() == 0;
}

void AddChoice(ChoiceList& list, const WCHAR* text)
{
    if (*text == 0)
        return;
    list.characters.pop_back();  // the empty text at the end
    list.characters.insert(list.characters.end(), text, text + wcslen(text) + 1);
    list.characters.push_back(0);
}
