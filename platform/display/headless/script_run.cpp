#include "headless/script_run.h"

#include "script.h"
#include "script_screen.h"
#include "script_user.h"
#include "transcript.h"

#include <memory>
#include <ostream>
#include <thread>

namespace platform::headless {

namespace {

constexpr int AllDone = 0;
constexpr int LineFailed = 1;
constexpr int BadScript = 2;

void complain(const ScriptOptions& options, const std::string& sentence)
{
    if (options.errors)
        *options.errors << sentence << std::endl;
}

// Performs the actions up to the first one that fails. Returns the line number of that action and the reason, or an
// empty text if all actions were done.
std::string performAll(ScriptUser& user, const Script& script)
{
    for (const Action& action : script.actions) {
        if (const Failure failure = user.perform(action))
            return "line " + std::to_string(action.line) + ": " + *failure;
    }
    return {};
}

}  // namespace

int runScript(const std::function<int()>& program, std::istream& in, const ScriptOptions& options)
{
    const Script script = parseScript(in);
    if (!script.error.empty()) {
        complain(options, script.error);
        return BadScript;
    }

    Transcript transcript(options.transcript);
    // The program's thread shares the ownership of the screen, because that thread continues after this call if the
    // program can't be closed.
    const auto screen = std::make_shared<ScriptScreen>(transcript);
    window::setDisplay(screen.get());
    std::thread thread([screen, program] {
        screen->programBegins();
        program();
        screen->programEnded();
    });

    ScriptUser user(*screen, transcript, options.timeout, options.output);
    const std::string failure = performAll(user, script);
    if (!failure.empty())
        complain(options, failure);
    const bool closed = user.closeProgram();
    if (closed)
        thread.join();
    window::setDisplay(nullptr);
    transcript.writeOut();
    if (!closed) {
        thread.detach();
        complain(options, "the program can't be closed");
    }
    return failure.empty() && closed ? AllDone : LineFailed;
}

}  // namespace platform::headless
