#include "session.h"

#include "requests.h"
#include "screen_text/screen_text.h"

#include <malloc.h>
#include <pthread.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <memory>
#include <system_error>
#include <thread>

namespace quillbox_mount {

namespace {

struct Free {
    void operator()(fuse_session* session) const { fuse_session_destroy(session); }
    void operator()(fuse_loop_config* config) const { fuse_loop_cfg_destroy(config); }
};

// Mounts the sets on the folder. The destructor unmounts the folder.
class Mounted {
public:
    Mounted(fuse_session* session, const std::string& folder)
        : session_(session), isMounted_(fuse_session_mount(session, folder.c_str()) == 0)
    {
    }
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;
    ~Mounted()
    {
        if (isMounted_)
            fuse_session_unmount(session_);
    }

    explicit operator bool() const { return isMounted_; }

private:
    fuse_session* session_;
    bool isMounted_;
};

// The signals that EndBySignal waits for. SIGINT, SIGTERM and SIGHUP end the mount. SIGUSR1 only interrupts the thread
// of libfuse's request loop, and the wait of EndBySignal.
constexpr int Awaited[] = {SIGINT, SIGTERM, SIGHUP, SIGUSR1};
constexpr int Interrupting = SIGUSR1;

sigset_t awaitedSignals()
{
    sigset_t all;
    (void)sigemptyset(&all);
    for (const int number : Awaited)
        (void)sigaddset(&all, number);
    return all;
}

// Blocks the signals that EndBySignal waits for. Call it before another thread is started, because new threads inherit
// the blocked signals.
void blockEndingSignals()
{
    struct sigaction nothing {};
    nothing.sa_handler = [](int) {};
    (void)::sigaction(Interrupting, &nothing, nullptr);
    (void)std::signal(SIGPIPE, SIG_IGN);  // NOLINT(cert-err33-c): it can't fail
    const sigset_t awaited = awaitedSignals();
    (void)pthread_sigmask(SIG_BLOCK, &awaited, nullptr);
}

// A thread that waits for a signal and then ends libfuse's request loop. It replaces libfuse's own signal handlers,
// because these can end the loop while a thread pushes file content to the kernel. The push can need a page that the
// kernel has locked for a pending read. After the end of the loop no thread answers that read, so the push would block
// forever.
class EndBySignal {
public:
    explicit EndBySignal(RequestState& state) : state_(state), thread_([this] { work(); })
    {
        sigset_t interrupting;
        (void)sigemptyset(&interrupting);
        (void)sigaddset(&interrupting, Interrupting);
        (void)pthread_sigmask(SIG_UNBLOCK, &interrupting, nullptr);
    }
    EndBySignal(const EndBySignal&) = delete;
    EndBySignal& operator=(const EndBySignal&) = delete;
    ~EndBySignal()
    {
        loopEnded_ = true;
        (void)pthread_kill(thread_.native_handle(), Interrupting);
        thread_.join();
    }

private:
    void work()
    {
        const sigset_t awaited = awaitedSignals();
        for (int number = Interrupting; number == Interrupting && !loopEnded_;)
            (void)sigwait(&awaited, &number);
        state_.ahead.end();
        state_.sets.end();
        fuse_session_exit(state_.session);
        // The loop waits for a semaphore that fuse_session_exit doesn't post, so a signal must interrupt the wait. A
        // signal that arrives just before the wait begins has no effect. So the signal is sent repeatedly until the
        // loop has ended.
        for (; !loopEnded_; std::this_thread::sleep_for(std::chrono::milliseconds(10)))
            (void)pthread_kill(loop_, Interrupting);
    }

    RequestState& state_;
    const pthread_t loop_ = pthread_self();
    std::atomic<bool> loopEnded_ = false;
    std::thread thread_;
};

// Raises the limit as far as possible, because each cached text and each set that was read keeps a file open.
void raiseLimitOfOpenFiles()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        (void)::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

// Drops libfuse's own messages. The caller of serve() reports an error in one sentence.
void dropMessage(fuse_log_level /*level*/, const char* /*format*/, va_list /*arguments*/) {}

// All threads allocate and free blocks of 128 KB. By default the C library would map each block anew, and grow and
// shrink a heap for each thread. Most of the time would then be spent on page faults.
void keepMemory()
{
    // NOLINTBEGIN(concurrency-mt-unsafe): there is one thread
    (void)mallopt(M_ARENA_MAX, 1);
    (void)mallopt(M_MMAP_THRESHOLD, 1024 * 1024);
    (void)mallopt(M_TRIM_THRESHOLD, 128 * 1024 * 1024);
    // NOLINTEND(concurrency-mt-unsafe)
}

}  // namespace

std::string serve(ShownSets& sets, const std::string& folder, Ground ground)
{
    fuse_set_log_func(dropMessage);
    keepMemory();
    raiseLimitOfOpenFiles();
    blockEndingSignals();
    // With these options the kernel checks permissions against the attributes, and refuses every write.
    char program[] = "quillbox-mount";
    char option[] = "-oro,default_permissions,fsname=quillbox,subtype=quillbox-mount";
    char* words[] = {program, option, nullptr};
    fuse_args arguments = FUSE_ARGS_INIT(2, words);
    RequestState state{.sets = sets};
    const std::unique_ptr<fuse_session, Free> session(
        fuse_session_new(&arguments, &requests(), sizeof requests(), &state));
    fuse_opt_free_args(&arguments);  // the library has copied them
    std::string notMounted = "the sets can't be mounted on " + screen_text::onScreen(std::string_view(folder));
    if (!session)
        return notMounted;
    state.session = session.get();
    const Mounted mounted(session.get(), folder);
    if (!mounted || fuse_daemonize(ground == Ground::Foreground ? 1 : 0) != 0)
        return notMounted;
    const std::unique_ptr<fuse_loop_config, Free> config(fuse_loop_cfg_create());
    const EndBySignal signals(state);
    // The loop returns 0, or -1 if a thread can't be started, or -errno if requests can't be read.
    const int ended = fuse_session_loop_mt(session.get(), config.get());
    if (ended == -1)
        return "the sets aren't mounted any more: a thread can't be started";
    if (ended < 0)
        return "the sets aren't mounted any more: the kernel's requests can't be read: " +
               std::generic_category().message(-ended);
    return "";
}

}  // namespace quillbox_mount
