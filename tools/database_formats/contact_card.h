// contact_card.h - a contact as a card of vCard 4, and a card of 2.1, 3 or 4 as a contact.
#pragma once

#include "component.h"
#include "database_formats/left_out.h"
#include "database_formats/record.h"

#include "ce/store.h"

#include <span>

namespace database_formats {

// What the card's plain lines can hold; exact_lines.h does the rest.
[[nodiscard]] Component cardOf(std::span<const CEPROPVAL> contact);
[[nodiscard]] Record contactFrom(const Component& card, LeftOut& leftOut);

}  // namespace database_formats
