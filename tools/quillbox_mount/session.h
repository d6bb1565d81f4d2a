// session.h - the mount of the kernel, and its requests.
#pragma once

#include "shown_sets.h"

#include <string>

namespace quillbox_mount {

enum class Ground { Foreground, Background };

// Mounts the sets on the folder, and answers requests until the folder is unmounted or SIGINT, SIGTERM or SIGHUP comes.
// Nothing is mounted afterwards. In the background the calling process ends with 0 as soon as the folder is mounted,
// and the call returns in its child. Returns an empty text, or a sentence without its point: the folder can't be
// mounted, or the kernel's requests can't be read any more.
[[nodiscard]] std::string serve(ShownSets& sets, const std::string& folder, Ground ground);

}  // namespace quillbox_mount
