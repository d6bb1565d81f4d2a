// session_end.h - notices that the desktop's session ends, or that a signal asks the process to end.
#pragma once

#include <QObject>

#include <functional>

namespace platform::qt {

// One at a time.
class SessionEnd final : public QObject {
public:
    // Calls `end` on the toolkit's thread. A run, if there is one, has been asked before to
    // stop at its next item.
    explicit SessionEnd(const std::function<void()>& end);
};

}  // namespace platform::qt
