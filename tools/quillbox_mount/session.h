// session.h - mounts the sets and answers the kernel's requests.
#pragma once

#include "shown_sets.h"

#include <string>

namespace quillbox_mount {

enum class Ground { Foreground, Background };

// Mounts the sets on the folder, and answers requests until the folder is unmounted or SIGINT, SIGTERM or SIGHUP
// arrives. After that nothing is mounted. With Ground::Background, the calling process exits with 0 as soon as the
// folder is mounted, and serve() returns in a child process. Returns an empty text, or an error as a sentence without
// its final point. There are three errors: the sets can't be mounted on the folder, a thread can't be started, or the
// kernel's requests can't be read any more.
[[nodiscard]] std::string serve(ShownSets& sets, const std::string& folder, Ground ground);

}  // namespace quillbox_mount
