#include "registry/registry_names.h"

#include "text/utf.h"

namespace platform::registry {

bool isText(std::u16string_view name)
{
    while (!name.empty()) {
        const unsigned units = text::decodeUtf16(name).units;
        if (units == 0)
            return false;
        name.remove_prefix(units);
    }
    return true;
}

}  // namespace platform::registry
