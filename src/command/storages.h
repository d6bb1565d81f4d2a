// storages.h - finds the storages of the device.
#pragma once

#include "ce/types.h"

#include <string>
#include <vector>

// The paths of the cards in the root of the device.
std::vector<std::u16string> Cards();
