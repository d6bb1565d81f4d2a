// contact_card.h - converts a contact to a vCard of version 4, and a vCard of version 2.1, 3 or 4 to a contact.
#pragma once

#include "component.h"
#include "database_formats/left_out.h"
#include "database_formats/record.h"

#include "ce/store.h"

#include <span>

namespace database_formats {

// The conversions in both directions use only lines that the standard for vCard defines. writtenText() counts the
// properties that these lines can't represent.
Component cardOf(std::span<const CEPROPVAL> contact);
Record contactFrom(const Component& card, LeftOut& leftOut);

}  // namespace database_formats
