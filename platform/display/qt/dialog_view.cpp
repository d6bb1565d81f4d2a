#include "dialog_view.h"

#include "header_bar.h"
#include "keys.h"
#include "plain_style.h"
#include "readable_palette.h"
#include "status_texts.h"

#include "ce/controls.h"
#include "ce/dialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>

#include <algorithm>

namespace platform::qt {

namespace {

using window::Change;
using window::WindowKind;
using window::WindowState;

bool isTabStop(const WindowState& state)
{
    const bool takesFocus = state.kind != WindowKind::Static && state.kind != WindowKind::ProgressBar &&
                            !(state.kind == WindowKind::Button && (state.style & 0xF) == BS_GROUPBOX);
    return takesFocus && state.visible && state.enabled && (state.style & WS_TABSTOP);
}

std::vector<HWND> tabStopsOf(HWND dialog)
{
    std::vector<HWND> stops;
    for (const HWND child : window::childrenOf(dialog)) {
        WindowState state;
        if (window::readWindow(child, state) && isTabStop(state))
            stops.push_back(child);
    }
    return stops;
}

// Returns true if an edit or a date picker leaves this key to the dialog.
bool isForDialog(const WindowState& edit, WORD key, Qt::KeyboardModifiers modifiers)
{
    if (key == VK_ESCAPE || (key == VK_TAB && !(modifiers & Qt::ControlModifier)) || (modifiers & Qt::AltModifier))
        return true;
    const bool breaksLines = edit.kind == WindowKind::Edit && (edit.style & ES_MULTILINE) &&
                             (edit.style & ES_WANTRETURN) && !edit.readOnly && !(modifiers & Qt::ControlModifier);
    return key == VK_RETURN && !breaksLines;
}

// Returns true if the key types text. A list box searches for typed text.
bool isTypedText(const QKeyEvent& event)
{
    const bool commands = event.modifiers() & (Qt::ControlModifier | Qt::AltModifier);
    return !commands && !event.text().isEmpty() && event.text().front().isPrint();
}

bool isForCore(const WindowState& state, WORD key, Qt::KeyboardModifiers modifiers)
{
    if (key == 0)
        return false;
    if (state.kind == WindowKind::Edit || state.kind == WindowKind::DatePicker)
        return isForDialog(state, key, modifiers);
    // The toolkit's button handles the space bar itself. It shows the button as pressed while the key is down, and
    // clicks it when the key is released.
    return state.kind != WindowKind::Button || key != VK_SPACE;
}

}  // namespace

DialogView::DialogView(const WindowState& state, const UserInput& input, QWidget* owner, bool modal)
    : QDialog(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint), TopView(state.window, input),
      content_(this)
{
    setWindowModality(modal ? Qt::WindowModal : Qt::NonModal);
    setAttribute(Qt::WA_ShowWithoutActivating, !modal);
    setAttribute(Qt::WA_KeyboardFocusChange);
    if (state.exStyle & WS_EX_CAPTIONOKBTN) {
        header_ = makeHeaderBar(
            this, [this] { this->input().captionOk(this->window()); }, [this] { this->input().close(this->window()); });
        for (QAbstractButton* button : header_->buttons())
            button->installEventFilter(this);
    } else if (state.style & WS_SYSMENU) {
        setWindowFlag(Qt::WindowCloseButtonHint);
    }
    follow(state, Changes::all());
}

void DialogView::follow(const WindowState& state, Changes changes)
{
    rect_ = state.rectangle;
    if (!changes.has(Change::Text))
        return;
    setWindowTitle(toQt(state.text));
    if (header_)
        header_->setTitle(windowTitle());
}

void DialogView::addControl(View& control, const WindowState& state)
{
    controls_.push_back({.view = &control, .state = state});
    control.widget().installEventFilter(this);
    if (state.kind == WindowKind::ProgressBar && !runDetails_)
        runDetails_ = new QLabel(&content_);
    if (auto* line = qobject_cast<QLineEdit*>(&control.widget()))
        connect(line, &QLineEdit::textChanged, this, [this] { followFocus(); });
    if (isVisible())
        arrange();
}

void DialogView::removeControl(View& control)
{
    const auto removed = std::ranges::find(controls_, &control, &Control::view);
    if (removed == controls_.end())
        return;
    if (growing_.size() == controls_.size())
        growing_.erase(growing_.begin() + (removed - controls_.begin()));
    controls_.erase(removed);
}

void DialogView::followRun(const RunView& run)
{
    for (const Control& control : controls_)
        control.view->followRun(run);
    if (runDetails_ && run.progress.underway)
        runDetails_->setText(
            QStringList{itemsText(run), amountText(run), run.closesAfterwards ? closingText(run) : timeText(run)}.join(
                u'\n'));
}

// Finds the button that Enter would press now, and marks it as the default button.
void DialogView::followFocus()
{
    QAbstractButton* pressed = header_ ? header_->buttons().front() : nullptr;
    for (const Control& control : controls_) {
        WindowState state;
        if (window::readWindow(control.view->window(), state) && state.defaultButton)
            pressed = qobject_cast<QAbstractButton*>(&control.view->widget());
    }
    const Control* focused = controlOf(focusWidget());
    if (const Control* beside = focused ? buttonBeside(*focused) : nullptr)
        pressed = qobject_cast<QAbstractButton*>(&beside->view->widget());
    if (header_ && header_->isAncestorOf(focusWidget()))
        pressed = qobject_cast<QAbstractButton*>(focusWidget());
    for (QPushButton* button : findChildren<QPushButton*>())
        button->setDefault(button == pressed);
}

void DialogView::present()
{
    followFocus();
    arrange();
    extra_ = firstExtra_ = findFirstExtra();
    arrange();
    placeOverOwner(*this);
    show();
}

const DialogView::Control* DialogView::controlOf(const QWidget* widget) const
{
    const auto found = std::find_if(controls_.begin(), controls_.end(),
                                    [&](const Control& control) { return &control.view->widget() == widget; });
    return found == controls_.end() ? nullptr : &*found;
}

// Returns the control that has the focus in the window core. The toolkit's focus can be at another control for a
// moment, or in the header.
const DialogView::Control* DialogView::focusedControl() const
{
    const auto found = std::find_if(controls_.begin(), controls_.end(), [](const Control& control) {
        WindowState state;
        return window::readWindow(control.view->window(), state) && state.focused;
    });
    return found == controls_.end() ? nullptr : &*found;
}

bool DialogView::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusIn)
        followFocus();
    if (event->type() == QEvent::FocusIn && static_cast<QFocusEvent*>(event)->reason() == Qt::OtherFocusReason) {
        if (const Control* control = controlOf(qobject_cast<QWidget*>(watched)))
            postFocus(*control);
    }
    if (event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    auto& key = static_cast<QKeyEvent&>(*event);
    auto* button = qobject_cast<QAbstractButton*>(watched);
    const bool inHeader = header_ && button && header_->isAncestorOf(button);
    if (inHeader && (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter)) {
        button->click();
        return true;
    }
    if (inHeader && key.key() == Qt::Key_Space)
        return false;
    return postKey(key);
}

// Returns true if the dialog has handled the key.
bool DialogView::postKey(QKeyEvent& event)
{
    const WORD key = virtualKeyOf(event);
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    const bool shift = modifiers.testFlag(Qt::ShiftModifier) || event.key() == Qt::Key_Backtab;
    const Control* control = controlOf(focusWidget());
    WindowState state;
    const HWND target = control ? control->view->window() : window();
    if (!window::readWindow(target, state))
        return false;
    if (state.kind == WindowKind::ListBox && isTypedText(event)) {
        input().typedText(target, fromQt(event.text()));
        return true;
    }
    if (!isForCore(state, key, modifiers))
        return false;
    if (key == VK_TAB && !modifiers.testFlag(Qt::ControlModifier) && tabThroughHeader(shift))
        return true;
    if (const Control* button = key == VK_RETURN && control ? buttonBeside(*control) : nullptr) {
        input().click(button->view->window());
        return true;
    }
    input().key(target, key, shift, modifiers.testFlag(Qt::ControlModifier), modifiers.testFlag(Qt::AltModifier));
    return true;
}

// Returns the push button in the row of a single-line edit. The button acts on the text of the edit, so Enter in the
// edit presses that button. Returns null if there is no such button or if the edit is empty.
const DialogView::Control* DialogView::buttonBeside(const Control& edit) const
{
    const auto* line = qobject_cast<const QLineEdit*>(&edit.view->widget());
    if (!line || line->text().isEmpty())
        return nullptr;
    const auto takesIt = [&](const Control& other) {
        const QWidget& widget = other.view->widget();
        return qobject_cast<const QPushButton*>(&widget) && widget.isEnabled() && widget.isVisible() &&
               widget.geometry().top() <= line->geometry().center().y() &&
               widget.geometry().bottom() >= line->geometry().center().y();
    };
    const auto found = std::ranges::find_if(controls_, takesIt);
    return found == controls_.end() ? nullptr : &*found;
}

// Handles Tab if the key moves the focus to, from or between the buttons of the header. Otherwise returns false, and
// the window core must handle the key. The window core has no windows for these buttons. In the tab order they come
// after the window core's last tab stop. After them the order begins again at the window core's first tab stop. While
// one of these buttons has the toolkit's focus, the focus in the window core doesn't move.
bool DialogView::tabThroughHeader(bool backward)
{
    if (!header_)
        return false;
    const auto& buttons = header_->buttons();
    const auto moveTo = [](QWidget* widget) { widget->setFocus(Qt::TabFocusReason); };
    const std::vector<HWND> stops = tabStopsOf(window());
    const Control* control = controlOf(focusWidget());
    const auto at = std::find(buttons.begin(), buttons.end(), focusWidget());
    if (at == buttons.end()) {
        const bool leaves =
            stops.empty() || !control || control->view->window() == (backward ? stops.front() : stops.back());
        if (leaves)
            moveTo(backward ? buttons.back() : buttons.front());
        return leaves;
    }
    const bool stays = at != (backward ? buttons.begin() : buttons.end() - 1);
    if (stays || stops.empty()) {
        moveTo(stays ? (backward ? *(at - 1) : *(at + 1)) : (backward ? buttons.back() : buttons.front()));
        return true;
    }
    // The focus leaves the header and moves to the first or last tab stop in the window core. If that control still has
    // the focus in the window core, only the toolkit's focus must move.
    const Control* focused = focusedControl();
    if (focused && focused->view->window() == (backward ? stops.back() : stops.front()))
        moveTo(&focused->view->widget());
    else
        input().key(focused ? focused->view->window() : window(), VK_TAB, backward, false, false);
    return true;
}

void DialogView::keyPressEvent(QKeyEvent* event)
{
    postKey(*event);
}

void DialogView::changeEvent(QEvent* event)
{
    QDialog::changeEvent(event);
    const bool looksDifferent = event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange;
    if (looksDifferent && isVisible())
        arrange();
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        showFocus();
}

// Moves the toolkit's focus to the control that has the focus in the window core, and makes the focus visible. This is
// necessary because the toolkit chooses a control by itself when a window becomes active. And if the user uses the
// mouse, the toolkit doesn't show which control has the focus.
void DialogView::showFocus()
{
    setAttribute(Qt::WA_KeyboardFocusChange);
    if (const Control* focused = focusedControl())
        focused->view->widget().setFocus(Qt::TabFocusReason);
}

// Asks the window core to give the focus to the control. Called for a focus event with the reason Qt::OtherFocusReason,
// which means that a screen reader has set the focus. The event has another reason if the mouse, Tab or this module
// sets the focus. The call to the window core is queued, because the toolkit is still changing the focus.
void DialogView::postFocus(const Control& control)
{
    QMetaObject::invokeMethod(
        this,
        [this, window = control.view->window()] {
            if (!input().focus(window))
                showFocus();
        },
        Qt::QueuedConnection);
}

void DialogView::reject()
{
    input().close(window());
}

void DialogView::closeEvent(QCloseEvent* event)
{
    event->ignore();
    input().close(window());
}

void DialogView::paintEvent(QPaintEvent* event)
{
    QDialog::paintEvent(event);
    if (!header_)
        return;
    // The window has no frame of the window manager. Without the outline that is drawn here, nothing would separate the
    // dialog from the window behind it.
    QPainter painter(this);
    drawOutline(painter, rect(), lineColor(palette()));
}

}  // namespace platform::qt
