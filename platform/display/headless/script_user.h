// script_user.h - performs the actions of a script on the screen.
//
// Each action waits until the program takes input and the action is possible. Only the script's thread may use a
// ScriptUser.
#pragma once

#include "script.h"
#include "script_screen.h"
#include "tree_control/tree_display.h"

#include <chrono>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace platform::headless {

// The reason why an action failed, without the line number. Empty if the action was done.
using Failure = std::optional<std::string>;

class ScriptUser {
public:
    // `timeout`: how long the script waits until an action is possible, or zero for no limit. `output`: the stream to
    // which `print` writes, or null.
    ScriptUser(ScriptScreen& screen, Transcript& transcript, std::chrono::milliseconds timeout, std::ostream* output)
        : screen_(screen), transcript_(transcript), timeout_(timeout), output_(output)
    {
    }

    [[nodiscard]] Failure perform(const Action& action);

    // Closes all windows, the main window last, and waits for the program's end. Answers that the script set with the
    // action `answer` still apply. Returns false if the program can't be closed.
    [[nodiscard]] bool closeProgram();

private:
    using Condition = std::function<bool()>;

    using TreeInput = std::function<bool(HWND, const window::TreeItemState&)>;

    // Returns when the program waits for input, has a window in front, and `holds` returns true. Fails if the timeout
    // passes or the program ends. `holds` may post input, because it is called only while the program waits for input,
    // and never again after it has returned true. The text of a failure names `expected` as what the script waited for.
    // If `atMost` is given, it limits the timeout of this call. It also applies if the script has no timeout.
    [[nodiscard]] Failure await(std::string_view expected, const Condition& holds,
                                std::optional<std::chrono::steady_clock::duration> atMost = std::nullopt);
    [[nodiscard]] Failure awaitControl(const Action& action, std::string_view what, const Condition& fits);
    [[nodiscard]] Failure pressTopButton(int id, bool messageBoxOnly);

    [[nodiscard]] Failure command(const Action& action);
    [[nodiscard]] Failure setCheck(const Action& action, bool on);
    [[nodiscard]] Failure editBy(const Action& action, std::initializer_list<Condition> inputs);
    [[nodiscard]] Failure type(const Action& action);
    [[nodiscard]] Failure clear(const Action& action);
    [[nodiscard]] Failure select(const Action& action);
    [[nodiscard]] Failure press(const Action& action);
    [[nodiscard]] Failure ok();
    [[nodiscard]] Failure cancel();
    [[nodiscard]] Failure close();
    [[nodiscard]] Failure key(const Action& action);
    // The actions on the tree view and the date picker are defined in tree_actions.cpp.
    [[nodiscard]] Failure atTreeItem(const Action& action, const TreeInput& input);
    [[nodiscard]] Failure foldTreeItem(const Action& action, bool expand);
    [[nodiscard]] Failure clickTreeItem(const Action& action);
    [[nodiscard]] Failure doubleClickTreeItem(const Action& action);
    [[nodiscard]] Failure expectImage(const Action& action);
    [[nodiscard]] Failure printTree();
    [[nodiscard]] Failure setDate(const Action& action);

    [[nodiscard]] Failure expect(const Action& action);
    [[nodiscard]] Failure expectText(const Action& action);
    [[nodiscard]] Failure print(const Action& action);
    [[nodiscard]] Failure printText();

    bool giveStandingAnswer();
    bool findTop();
    std::optional<window::WindowState> findShownControl(int id) const;
    std::string screenText() const;
    std::string screenTextWithProgress() const;

    ScriptScreen& screen_;
    Transcript& transcript_;
    std::chrono::milliseconds timeout_;
    std::ostream* output_;
    std::vector<Action> standingAnswers_;
    std::string waitingLine_;  // the action's line, until await() adds it to the transcript
    HWND answered_ = nullptr;  // the message box that got the last standing answer

    // The window and control that await() and awaitControl() found last.
    window::WindowState top_;
    window::WindowState control_;
};

}  // namespace platform::headless
