// choice_details.h - describes a storage or a set for the user who is to choose one. The chooser dialog shows this text
// beside the choice (questions.h).
#pragma once

#include "set/texts.h"

#include "ce/types.h"

// Describes the storage by its free space. `detail` is empty if the free space can't be read.
void DescribeStorage(const WCHAR* storage, WCHAR (&detail)[TextChars]);

// Describes the set by its date and its comment. The comment is put in one line. `detail` is empty if the list file
// can't be read or its comment is damaged.
void DescribeSet(const WCHAR* listPath, WCHAR (&detail)[TextChars]);
