#include "script_user.h"

#include "controls/list_display.h"
#include "pattern.h"
#include "reading.h"
#include "text/host_name.h"

#include "ce/dialog.h"

#include <algorithm>
#include <ostream>
#include <unordered_set>
#include <utility>

namespace platform::headless {

using std::chrono::steady_clock;
using window::WindowKind;
using window::WindowState;

namespace {

// closeProgram() counts the windows that have the same content as an already closed window. When the count reaches this
// number, closeProgram() gives up.
constexpr int RepeatsAtMost = 200;
// The longest single wait of await() while its timeout runs. After each wait, await() subtracts the measured time from
// the time left, but at most this length. So if the process is stopped for a minute, the script still has the rest of
// its timeout.
constexpr std::chrono::milliseconds LongestWait(50);

}  // namespace

Failure ScriptUser::perform(const Action& action)
{
    waitingLine_ = "line " + std::to_string(action.line) + " " + action.words;
    switch (action.verb) {
    case Verb::Command:
        return command(action);
    case Verb::Wait:
        return await("a window " + quoted(action.text), [&] { return matches(action.text, onOneLine(top_.text)); });
    case Verb::Check:
        return setCheck(action, true);
    case Verb::Uncheck:
        return setCheck(action, false);
    case Verb::Type:
        return type(action);
    case Verb::Clear:
        return clear(action);
    case Verb::Select:
        return select(action);
    case Verb::Press:
        return press(action);
    case Verb::Ok:
        return ok();
    case Verb::Cancel:
        return cancel();
    case Verb::Close:
        return close();
    case Verb::Yes:
        return pressTopButton(IDYES, true);
    case Verb::No:
        return pressTopButton(IDNO, true);
    case Verb::Answer:
        return await("a window", [&] {
            standingAnswers_.push_back(action);
            return true;
        });
    case Verb::Key:
        return key(action);
    case Verb::Expand:
        return foldTreeItem(action, true);
    case Verb::Collapse:
        return foldTreeItem(action, false);
    case Verb::Click:
        return clickTreeItem(action);
    case Verb::DoubleClick:
        return doubleClickTreeItem(action);
    case Verb::Date:
        return setDate(action);
    case Verb::ExpectImage:
        return expectImage(action);
    case Verb::PrintTree:
        return printTree();
    case Verb::Expect:
        return expect(action);
    case Verb::ExpectText:
        return expectText(action);
    case Verb::Print:
        return print(action);
    case Verb::PrintText:
        return printText();
    case Verb::Idle:
        return await("the main window at rest", [&] { return top_.kind == WindowKind::Main; });
    }
    return "an action that is not known";
}

bool ScriptUser::closeProgram()
{
    // A backup or restore (a run) can ask about each of its files. Each answer changes the question's text or the count
    // in the progress window. So `repeats` stays small even if a run asks thousands of questions.
    std::unordered_set<std::string> closed;
    int repeats = 0;
    const auto close = [&] {
        const std::string shown = screenTextWithProgress();
        const bool isBox = top_.kind == WindowKind::MessageBox;
        if (!window::postClose(top_.window) &&
            !(isBox ? window::postRefusal(top_.window) : window::postKey(top_.window, VK_ESCAPE)))
            return false;
        repeats += closed.insert(shown).second ? 0 : 1;
        return true;
    };
    // await() also fails when the program has ended, which is the goal here.
    while (repeats < RepeatsAtMost && !await("the program's end", close))
        continue;
    return screen_.hasEnded();
}

// The timeout runs only while the program waits for input, so a backup or restore can take any length of time.
// changes() is read before `holds` is called. So if a change arrives during that call, waitForMore() returns at once.
Failure ScriptUser::await(std::string_view expected, const Condition& holds,
                          std::optional<steady_clock::duration> atMost)
{
    const bool forEver = !atMost && timeout_ == std::chrono::milliseconds::zero();
    steady_clock::duration timeLeft = timeout_;
    if (atMost && (timeLeft == steady_clock::duration::zero() || *atMost < timeLeft))
        timeLeft = *atMost;
    for (;;) {
        const std::uint64_t seen = screen_.changes();
        transcript_.writeOut();
        if (screen_.hasEnded())
            return "expected " + std::string(expected) + ", but the program has ended";
        if (findTop() && !giveStandingAnswer()) {
            // The action's line is added only when the program waits for input, so that the transcript has the same
            // order on every machine.
            if (!waitingLine_.empty())
                transcript_.add(std::exchange(waitingLine_, {}));
            if (holds())
                return std::nullopt;
        }

        if (forEver || !screen_.programIsIdle()) {
            screen_.waitForMore(seen, std::nullopt);
        } else if (timeLeft == steady_clock::duration::zero() && screen_.changes() == seen) {
            return "expected " + std::string(expected) + ", on the screen: " + screenText();
        } else {
            const steady_clock::duration slice = std::min<steady_clock::duration>(timeLeft, LongestWait);
            const auto begin = steady_clock::now();
            screen_.waitForMore(seen, slice);
            timeLeft -= std::min(slice, steady_clock::now() - begin);
        }
    }
}

// Waits until the window in front has an enabled control with the action's id and `fits` returns true. Stores this
// control in control_ before each call of `fits`.
Failure ScriptUser::awaitControl(const Action& action, std::string_view what, const Condition& fits)
{
    return await(std::string(what) + " " + std::to_string(action.id) + " that takes input", [&] {
        const std::optional<WindowState> found = findControl(top_.window, action.id);
        if (!found || !found->enabled)
            return false;
        control_ = *found;
        return fits();
    });
}

Failure ScriptUser::pressTopButton(int id, bool messageBoxOnly)
{
    return await("a window with the button " + std::string(answerName(id)), [&] {
        if (messageBoxOnly && top_.kind != WindowKind::MessageBox)
            return false;
        const std::optional<WindowState> button = findControl(top_.window, id);
        return button && button->enabled && window::postClick(button->window);
    });
}

Failure ScriptUser::command(const Action& action)
{
    const auto id = static_cast<WORD>(action.id);
    return await("the main window with the command " + std::to_string(id),
                 [&] { return hasCommand(top_.window, id) && window::postCommand(top_.window, id); });
}

Failure ScriptUser::setCheck(const Action& action, bool on)
{
    bool clicked = false;
    const auto isAsWanted = [&] { return (control_.check != 0) == on; };
    Failure failure = awaitControl(action, "a check box or radio button", [&] {
        if (!isCheckable(control_) || control_.kind != WindowKind::Button)
            return false;
        clicked = !isAsWanted() && window::postClick(control_.window);
        return clicked || isAsWanted();
    });
    if (failure || !clicked)
        return failure;

    // The result is checked, because a click doesn't uncheck a radio button, and a program can undo a click.
    failure = await("a window", [] { return true; });
    if (!failure && window::readWindow(control_.window, control_) && !isAsWanted())
        return "a click doesn't " + std::string(on ? "check " : "uncheck ") + std::to_string(action.id) +
               ", on the screen: " + screenText();
    return failure;
}

// Posts the inputs to an edit. The window core can drop an input that arrives while the program is busy. So each input
// is posted only after the program has handled the one before it.
Failure ScriptUser::editBy(const Action& action, std::initializer_list<Condition> inputs)
{
    for (const Condition& input : inputs) {
        Failure failure = awaitControl(
            action, "an edit", [&] { return control_.kind == WindowKind::Edit && !control_.readOnly && input(); });
        if (failure)
            return failure;
    }
    return std::nullopt;
}

Failure ScriptUser::type(const Action& action)
{
    return editBy(action, {[&] { return window::postClick(control_.window); },
                           [&] { return window::postKey(control_.window, VK_END, false, true); },
                           [&] { return window::postText(control_.window, action.text); }});
}

Failure ScriptUser::clear(const Action& action)
{
    constexpr WORD LetterA = 'A';
    return editBy(action, {[&] { return window::postClick(control_.window); },
                           [&] { return window::postKey(control_.window, LetterA, false, true); },
                           [&] { return window::postKey(control_.window, VK_DELETE); }});
}

Failure ScriptUser::select(const Action& action)
{
    const std::string what = "a row " + quoted(action.text) + " in a list";
    return awaitControl(action, what, [&] {
        if (control_.kind != WindowKind::ListBox)
            return false;
        const long row = window::findListRow(control_.window, action.text);
        return row >= 0 && window::postClick(control_.window, row);
    });
}

Failure ScriptUser::press(const Action& action)
{
    return awaitControl(action, "a button",
                        [&] { return control_.kind == WindowKind::Button && window::postClick(control_.window); });
}

Failure ScriptUser::ok()
{
    return await("a window with OK", [&] {
        if (const std::optional<WindowState> button = findControl(top_.window, IDOK))
            return button->enabled && window::postClick(button->window);
        return (top_.exStyle & WS_EX_CAPTIONOKBTN) != 0 && window::postCaptionOk(top_.window);
    });
}

Failure ScriptUser::cancel()
{
    return await("a dialog or message box", [&] {
        const bool hasCancel = top_.kind == WindowKind::MessageBox && (top_.style & WS_SYSMENU) != 0;
        if (top_.kind != WindowKind::Dialog && !hasCancel)
            return false;
        if (const std::optional<WindowState> button = findControl(top_.window, IDCANCEL))
            return button->enabled && window::postClick(button->window);
        return window::postKey(top_.window, VK_ESCAPE);
    });
}

Failure ScriptUser::close()
{
    return await("a window with a close box", [&] {
        const bool closeBox = top_.kind == WindowKind::Main || (top_.style & WS_SYSMENU) != 0;
        return closeBox && window::postClose(top_.window);
    });
}

Failure ScriptUser::key(const Action& action)
{
    const KeyStroke& stroke = action.key;
    return await("a window that takes keys", [&] {
        return window::postKey(focusIn(top_.window), stroke.virtualKey, stroke.shift, stroke.control, stroke.alt);
    });
}

Failure ScriptUser::expect(const Action& action)
{
    std::optional<WindowState> control;
    if (Failure failure = await("a control " + std::to_string(action.id), [&] {
            control = findShownControl(action.id);
            return control.has_value();
        }))
        return failure;

    std::string shown;
    for (const std::u16string& line : linesOf(*control)) {
        if (matches(action.text, line))
            return std::nullopt;
        shown += (shown.empty() ? "" : ", ") + quoted(line);
    }
    return "expected " + quoted(action.text) + " in " + std::to_string(action.id) + ", which shows " +
           (shown.empty() ? "nothing" : shown) + ", on the screen: " + screenText();
}

Failure ScriptUser::expectText(const Action& action)
{
    if (Failure failure = await("a window", [] { return true; }))
        return failure;
    const std::optional<Snapshot> shown = snapshotOf(top_.window);
    if (shown && matches(action.text, textOf(*shown)))
        return std::nullopt;
    return "expected the text " + quoted(action.text) + ", on the screen: " + screenText();
}

Failure ScriptUser::print(const Action& action)
{
    std::optional<WindowState> control;
    Failure failure = await("a control " + std::to_string(action.id), [&] {
        control = findShownControl(action.id);
        return control.has_value();
    });
    if (failure || !output_)
        return failure;
    for (const std::u16string& line : linesOf(*control))
        *output_ << text::toUtf8(line) << '\n';
    output_->flush();
    return std::nullopt;
}

Failure ScriptUser::printText()
{
    Failure failure = await("a window", [] { return true; });
    const std::optional<Snapshot> shown = snapshotOf(top_.window);
    if (!failure && shown && output_)
        *output_ << text::toUtf8(textOf(*shown)) << std::endl;
    return failure;
}

// A standing answer is one that the script set with the action `answer`. If such an answer matches the message box in
// front, answers the box and returns true. The script's other actions don't see that box.
bool ScriptUser::giveStandingAnswer()
{
    if (top_.kind != WindowKind::MessageBox)
        return false;
    const std::optional<Snapshot> box = snapshotOf(top_.window);
    const std::u16string text = box ? textOf(*box) : u"";
    for (const Action& answer : standingAnswers_) {
        const std::optional<WindowState> button = findControl(top_.window, answer.answer);
        if (!button || !button->enabled || !matches(answer.text, text))
            continue;
        if (answered_ != top_.window)
            transcript_.add("answer " + std::string(answerName(answer.answer)) + " line " +
                            std::to_string(answer.line) + " to " + quoted(top_.text) + " " + quoted(text));
        answered_ = top_.window;
        window::postClick(button->window);
        return true;
    }
    return false;
}

// If the program waits for input with a window in front, sets top_ to that window and returns true.
bool ScriptUser::findTop()
{
    if (!screen_.programIsIdle())
        return false;
    std::optional<WindowState> top = screen_.top();
    if (!top)
        return false;
    top_ = std::move(*top);
    return true;
}

std::optional<WindowState> ScriptUser::findShownControl(int id) const
{
    if (std::optional<WindowState> control = findControl(top_.window, id))
        return control;
    for (const WindowState& progress : screen_.progressWindows()) {
        if (std::optional<WindowState> control = findControl(progress.window, id))
            return control;
    }
    return std::nullopt;
}

std::string ScriptUser::screenText() const
{
    const std::optional<WindowState> top = screen_.top();
    const std::optional<Snapshot> shown = top ? snapshotOf(top->window) : std::nullopt;
    if (!shown)
        return "no window";
    const std::u16string texts = textsOf(*shown);
    return quoted(shown->window.text) + (texts.empty() ? "" : ": " + quoted(texts));
}

std::string ScriptUser::screenTextWithProgress() const
{
    std::string all = screenText();
    for (const WindowState& progress : screen_.progressWindows()) {
        if (const std::optional<Snapshot> shown = snapshotOf(progress.window))
            all += quoted(textOf(*shown));
    }
    return all;
}

}  // namespace platform::headless
