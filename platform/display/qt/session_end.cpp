#include "session_end.h"

#include "kernel/job.h"

#include <QGuiApplication>
#include <QSocketNotifier>

#include <atomic>
#include <cstdint>

#include <sys/eventfd.h>
#include <unistd.h>

namespace platform::qt {

namespace {

constexpr int None = -1;

// The descriptor of the event with which a signal handler wakes the toolkit's thread. It is never closed, because a
// signal can arrive later.
std::atomic<int> signalled = None;

void noteSignal()
{
    const std::uint64_t one = 1;
    (void)!::write(signalled, &one, sizeof(one));
}

}  // namespace

SessionEnd::SessionEnd(const std::function<void()>& end)
{
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, [end] {
        kernel::stopEveryJob();
        end();
    });
    if (signalled == None)
        signalled = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (signalled == None)
        return;
    auto* notifier = new QSocketNotifier(signalled, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [notifier, end] {
        notifier->setEnabled(false);
        end();
    });
    kernel::stopEveryJobAtSignal(noteSignal);
}

}  // namespace platform::qt
