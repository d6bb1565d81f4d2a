// contact_card.h - a contact as a card of vCard 4, and a card of version 2.1, 3 or 4 as a contact.
#pragma once

#include "component.h"
#include "database_formats/left_out.h"
#include "database_formats/record.h"

#include "ce/store.h"

#include <span>

namespace database_formats {

// Both directions use only the standard's own lines. written_text.h finds out what these can't hold.
Component cardOf(std::span<const CEPROPVAL> contact);
Record contactFrom(const Component& card, LeftOut& leftOut);

}  // namespace database_formats
