// session_end.h - notices that the desktop's session ends, or that a signal asks the process to end.
#pragma once

#include <QObject>

#include <functional>

namespace platform::qt {

// At most one object may exist at a time.
class SessionEnd final : public QObject {
public:
    // When the session ends or one of SIGINT, SIGTERM and SIGHUP arrives, asks the job in progress (a backup or
    // restore) and each later job to stop before its next item. Then calls `end` on the toolkit's thread.
    explicit SessionEnd(const std::function<void()>& end);
};

}  // namespace platform::qt
