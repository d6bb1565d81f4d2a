// stored_attributes.h - reads the device's attributes (FILE_ATTRIBUTE_*) that are stored with a file or folder of the
// host.
#pragma once

#include "host_calls.h"

#include "ce/types.h"

namespace platform::file {

struct StoredAttributes {
    DWORD bits = 0;
    int error = 0;  // a negative errno if the host failed, in which case the bits aren't known
};

// Reads the extended attribute `user.DOSATTRIB` of the entry `name` in the open folder `folder`. If `name` is empty,
// `folder` is the open entry itself. The attribute's value is hexadecimal text such as "0x22". Any other text results
// in no bits. The bits FILE_ATTRIBUTE_DIRECTORY, FILE_ATTRIBUTE_NORMAL and FILE_ATTRIBUTE_TEMPORARY are ignored,
// because other code sets them. `status` is the entry's status, which the caller has read just before. If the bits for
// this status are remembered (known_attributes.h), the host isn't asked.
[[nodiscard]] StoredAttributes storedAttributes(int folder, const char* name, const HostStatus& status);

}  // namespace platform::file
