// tree_listing.h - fills an item that expands: the databases, or one level of a folder under the filter.
#pragma once

#include "tree/tree_model.h"

// `code` is the item's TreeCode; items of other kinds than "Databases", "Files" and folders get nothing. Each new item
// takes its look from the lists. Always 1: what can't be listed stays empty.
DWORD ListChildren(HTREEITEM item, WORD code);
