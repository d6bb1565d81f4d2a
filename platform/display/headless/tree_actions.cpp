// tree_actions.cpp - the actions of ScriptUser on a tree view and a date picker.

#include "script_user.h"

#include "controls/date_display.h"
#include "pattern.h"
#include "text/host_name.h"
#include "tree_reading.h"

#include <algorithm>
#include <charconv>
#include <ostream>
#include <string>

namespace platform::headless {

using window::TreeItemState;
using window::TreePart;
using window::WindowKind;
using window::WindowState;

namespace {

// If an item shows another image than the script expects, the script waits this long for the expected image. Some
// images change only when a timer of the program is due.
constexpr std::chrono::seconds ImagesSettleWithin(2);

HWND findDatePicker(HWND top, int id)
{
    for (const HWND child : window::childrenOf(top)) {
        WindowState state;
        if (window::readWindow(child, state) && state.kind == WindowKind::DatePicker && state.id == id &&
            state.visible && state.enabled)
            return child;
    }
    return nullptr;
}

bool readNumber(std::string_view text, WORD& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

// Reads a date such as "2026-11-24".
std::optional<SYSTEMTIME> parseDate(const std::string& text)
{
    constexpr std::size_t Length = 10;
    SYSTEMTIME date = {};
    FILETIME time = {};
    const bool read = text.size() == Length && text[4] == '-' && text[7] == '-' &&
                      readNumber(text.substr(0, 4), date.wYear) && readNumber(text.substr(5, 2), date.wMonth) &&
                      readNumber(text.substr(8), date.wDay);
    return read && SystemTimeToFileTime(&date, &time) ? std::optional(date) : std::nullopt;
}

}  // namespace

// Waits until the tree has the item and `input` returns true. Calls `input` at each check that finds the item. `input`
// may post a click on the item.
Failure ScriptUser::atTreeItem(const Action& action, const TreeInput& input)
{
    return await("the tree item " + quoted(action.text), [&] {
        const HWND tree = findTree(top_.window);
        const std::optional<TreeItemState> item = findTreeItem(tree, action.text);
        return item && input(tree, *item);
    });
}

Failure ScriptUser::foldTreeItem(const Action& action, bool expand)
{
    bool hasButton = true;
    Failure failure = atTreeItem(action, [&](HWND tree, const TreeItemState& item) {
        hasButton = item.hasButton;
        return item.expanded == expand || !hasButton || window::postTreeClick(tree, item.item, TreePart::Button);
    });
    if (!failure && expand && !hasButton)
        return "the tree item " + quoted(action.text) + " can't be expanded, on the screen: " + screenText();
    return failure;
}

Failure ScriptUser::clickTreeItem(const Action& action)
{
    return atTreeItem(action, [](HWND tree, const TreeItemState& item) {
        return window::postTreeClick(tree, item.item, TreePart::Label);
    });
}

// The second click waits until the program has handled the first.
Failure ScriptUser::doubleClickTreeItem(const Action& action)
{
    Failure failure = clickTreeItem(action);
    if (failure)
        return failure;
    return atTreeItem(action, [](HWND tree, const TreeItemState& item) {
        return window::postTreeDoubleClick(tree, item.item, TreePart::Label);
    });
}

Failure ScriptUser::expectImage(const Action& action)
{
    std::optional<TreeItemState> seen;
    Failure failure = await("the tree item " + quoted(action.text), [&] {
        seen = findTreeItem(findTree(top_.window), action.text);
        return seen.has_value();
    });
    if (failure || seen->image == action.id)
        return failure;
    const Failure late = await(
        "the image",
        [&] {
            seen = findTreeItem(findTree(top_.window), action.text);
            return seen && seen->image == action.id;
        },
        ImagesSettleWithin);
    if (!late)
        return std::nullopt;
    return "expected image " + std::to_string(action.id) + " of " + quoted(action.text) + ", which has " +
           (seen ? std::to_string(seen->image) : "gone") + ", on the screen: " + screenText();
}

Failure ScriptUser::printTree()
{
    HWND tree = nullptr;
    Failure failure = await("a window with a tree", [&] {
        tree = findTree(top_.window);
        return tree != nullptr;
    });
    if (failure || !output_)
        return failure;
    for (const std::u16string& line : linesOfTree(tree))
        *output_ << text::toUtf8(onOneLine(line)) << '\n';
    output_->flush();
    return std::nullopt;
}

Failure ScriptUser::setDate(const Action& action)
{
    const std::optional<SYSTEMTIME> date = parseDate(text::toUtf8(action.text));
    if (!date)
        return quoted(action.text) + " is no date (\"2026-11-24\")";
    return await("a date picker " + std::to_string(action.id) + " that takes input", [&] {
        const HWND picker = findDatePicker(top_.window, action.id);
        return picker && window::postDate(picker, *date);
    });
}

}  // namespace platform::headless
