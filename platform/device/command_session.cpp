#include "command_session.h"

#include "command_outcome.h"
#include "exit_codes.h"
#include "refusal.h"
#include "telling.h"
#include "terminal.h"

#include "kernel/job.h"
#include "kernel/run_progress.h"
#include "text/host_name.h"

#include "ce/command.h"
#include "ce/outcome.h"

#include <chrono>
#include <thread>

namespace platform::device {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// If the device doesn't exist and the command may not create it (`mayMake` is false), returns the reason for refusing
// the command. Otherwise returns nothing. A restore may create an empty device. A backup may not, because a backup of
// an empty device would contain nothing of the user's.
std::optional<std::string> whyNoDevice(const fs::path& folder, bool mayMake)
{
    std::error_code error;
    if (mayMake || fs::is_directory(folder / "object-store", error))
        return std::nullopt;
    return quoted(folder) + " is not a device: it has no folder \"object-store\".";
}

// Finds the user's medium that has the same name as the card `path`, and returns the medium's folder. Returns nothing
// if there is no such medium, or if the device itself has something at this path.
std::optional<fs::path> mediumNamed(const Device& device, const std::u16string& path)
{
    const auto name = path.empty() ? std::nullopt : text::toHostName(path.substr(1));
    std::error_code error;
    if (!name || fs::exists(device.hostPath(path), error))
        return std::nullopt;
    for (const fs::path& folder : usualMediaFolders())
        if (fs::is_directory(folder / *name, error))
            return folder / *name;
    return std::nullopt;
}

void open(Session& session, const CommandLine& line, const NamedStorage& storage)
{
    session.opened = openDevice(line.device, line.extras, false);
    if (!session.opened.device)
        return;
    if (!line.mediaFolders.empty())
        session.opened.device->showMedia(line.mediaFolders, [] { return true; });
    session.storage.path = storage.path;
    const auto folder = storage.folder ? storage.folder : mediumNamed(*session.opened.device, storage.path);
    if (!folder)
        return;
    session.storage = session.opened.device->showStorage(*folder);
    if (session.storage.error.sentence.empty())
        return;
    session.opened.error = session.storage.error;
    session.opened.device.reset();
}

void openWaiting(Session& session, const CommandLine& line, const NamedStorage& storage)
{
    const auto until = std::chrono::steady_clock::now() + line.command->wait;
    for (open(session, line, storage); !session.opened.device; open(session, line, storage)) {
        if (!session.opened.error.inUse || std::chrono::steady_clock::now() >= until || JobIsToStop())
            return;
        std::this_thread::sleep_for(200ms);
    }
}

}  // namespace

bool Session::showsProgress() const
{
    return standardErrorIsTerminal() && !command.quiet;
}

std::string Session::hostPath(const std::u16string& path) const
{
    return opened.device->hostPath(path).string();
}

int onDevice(const CommandLine& line, HINSTANCE instance, const NamedStorage& storage, bool mayMake,
             const std::function<int(const Session& session)>& run)
{
    if (const auto reason = whyNoDevice(line.device, mayMake))
        return endRefused(*line.command, *reason, ExitNothingDone);
    Session session = {*line.command, {}, {}};
    openWaiting(session, line, storage);
    if (!session.opened.device)
        return endRefused(session.command, session.opened.error.sentence, ExitNothingDone);
    tellWarnings(session.opened);
    BeginCommand(instance);
    return run(session);
}

double secondsOfRun()
{
    return std::chrono::duration<double>(kernel::runProgress().time).count();
}

}  // namespace platform::device
