// choice_details.h - what the user should know of a storage or a set before choosing it. The chooser shows it beside
// the choice (questions.h).
#pragma once

#include "set/texts.h"

#include "ce/types.h"

// Its free space. Empty if that can't be read.
void DescribeStorage(const WCHAR* storage, WCHAR (&detail)[TextChars]);

// Its date and comment, the latter in one line. Empty if the list file can't be read.
void DescribeSet(const WCHAR* listPath, WCHAR (&detail)[TextChars]);
