// script_user.h - the user that a script describes: does one action after the other on the screen.
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

// Why an action could not be done, a sentence without its line number; nothing if it was.
using Failure = std::optional<std::string>;

class ScriptUser {
public:
    // `timeout`: how long an action may wait until it can be done, zero for no limit.
    // `output`: for what `print` writes, or null.
    ScriptUser(ScriptScreen& screen, Transcript& transcript, std::chrono::milliseconds timeout, std::ostream* output)
        : screen_(screen), transcript_(transcript), timeout_(timeout), output_(output)
    {
    }

    [[nodiscard]] Failure perform(const Action& action);

    // Closes whatever stands on the screen, the main window last, and waits for the program's end. Standing
    // answers hold on. False if the program can't be closed.
    [[nodiscard]] bool leave();

private:
    using Condition = std::function<bool()>;

    using TreeInput = std::function<bool(HWND, const window::TreeItemState&)>;

    // `atMost`: give up sooner than the options say.
    [[nodiscard]] Failure await(std::string_view expected, const Condition& isSo,
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
    // Of the tree view and the date picker: tree_actions.cpp.
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
    bool look();
    [[nodiscard]] std::optional<window::WindowState> findShownControl(int id) const;
    [[nodiscard]] std::string onTheScreen() const;
    [[nodiscard]] std::string everythingOnTheScreen() const;  // the progress windows too

    ScriptScreen& screen_;
    Transcript& transcript_;
    std::chrono::milliseconds timeout_;
    std::ostream* output_;
    std::vector<Action> standingAnswers_;
    std::string waitingLine_;  // for the transcript, until the program rests
    HWND answered_ = nullptr;  // the message box that got the last standing answer

    // What the program showed when it was last looked at, at rest.
    window::WindowState top_;
    window::WindowState control_;
};

}  // namespace platform::headless
