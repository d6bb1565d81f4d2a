#include "session.h"

#include "requests.h"
#include "screen_text/screen_text.h"

#include <malloc.h>

#include <memory>
#include <system_error>

namespace quillbox_mount {

namespace {

struct Free {
    void operator()(fuse_session* session) const { fuse_session_destroy(session); }
    void operator()(fuse_loop_config* config) const { fuse_loop_cfg_destroy(config); }
};

// While it exists, the folder is mounted and signals end the loop.
class Mounted {
public:
    Mounted(fuse_session* session, const std::string& folder)
        : session_(session), handlesSignals_(fuse_set_signal_handlers(session) == 0),
          isMounted_(handlesSignals_ && fuse_session_mount(session, folder.c_str()) == 0)
    {
    }
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;
    ~Mounted()
    {
        if (isMounted_)
            fuse_session_unmount(session_);
        if (handlesSignals_)
            fuse_remove_signal_handlers(session_);
    }

    explicit operator bool() const { return isMounted_; }

private:
    fuse_session* session_;
    bool handlesSignals_;
    bool isMounted_;
};

// The caller says in one sentence what is wrong.
void dropMessage(fuse_log_level /*level*/, const char* /*format*/, va_list /*arguments*/) {}

// Blocks of 128 KB come and go in all threads. By default the library would map each one anew, and grow and shrink a
// heap for each thread, so that most of the time went to page faults.
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
    // The kernel checks the permissions by the attributes, and refuses every write.
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
    state.measuring.emplace(sets);  // the process that went to the background has no other threads yet
    const std::unique_ptr<fuse_loop_config, Free> config(fuse_loop_cfg_create());
    const int ended = fuse_session_loop_mt(session.get(), config.get());  // a signal's number, or an errno below 0
    if (ended < 0)
        return "the sets aren't mounted any more: the kernel's requests can't be read: " +
               std::generic_category().message(-ended);
    return "";
}

}  // namespace quillbox_mount
