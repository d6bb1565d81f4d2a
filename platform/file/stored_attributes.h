// stored_attributes.h - the attributes that the host keeps with a file or folder for the device.
#pragma once

#include "host_calls.h"

#include "ce/types.h"

namespace platform::file {

struct StoredAttributes {
    DWORD bits = 0;
    int error = 0;  // a negative errno if the host failed, so that there may be bits
};

// Reads the extended attribute `user.DOSATTRIB` of an entry of `folder`, or with an empty name of the descriptor
// itself: hexadecimal text such as "0x22". Any other text gives no bits. Bits that the host itself decides (folder,
// normal, card) are left out. `status` is that of the entry, read just before: if the answer is known for it, the host
// isn't asked.
[[nodiscard]] StoredAttributes storedAttributes(int folder, const char* name, const HostStatus& status);

}  // namespace platform::file
