#include "blocked_owner.h"
#include "view_makers.h"

#include "ce/dialog.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>

#include <map>
#include <optional>

namespace platform::qt {

namespace {

using window::WindowKind;
using window::WindowState;

constexpr UINT IconBits = 0xF0;

QMessageBox::Icon iconOf(UINT type)
{
    switch (type & IconBits) {
    case MB_ICONHAND:
        return QMessageBox::Critical;
    case MB_ICONQUESTION:
        return QMessageBox::Question;
    case MB_ICONEXCLAMATION:
        return QMessageBox::Warning;
    case MB_ICONASTERISK:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

// Returns the toolkit's button for the answer. The button has a text and a mnemonic in the user's language. Returns
// nothing if the toolkit has no such button.
std::optional<QMessageBox::StandardButton> desktopButton(int id)
{
    switch (id) {
    case IDOK:
        return QMessageBox::Ok;
    case IDCANCEL:
        return QMessageBox::Cancel;
    case IDABORT:
        return QMessageBox::Abort;
    case IDRETRY:
        return QMessageBox::Retry;
    case IDIGNORE:
        return QMessageBox::Ignore;
    case IDYES:
        return QMessageBox::Yes;
    case IDNO:
        return QMessageBox::No;
    default:
        return std::nullopt;
    }
}

// Shows a message box of the window core as a message box of the toolkit. The text and the answers of the toolkit's box
// are made from the controls of the window core's box.
class MessageView final : public QMessageBox, public TopView {
public:
    MessageView(const WindowState& state, const UserInput& input, QWidget* owner)
        : QMessageBox(owner), TopView(state.window, input)
    {
        const bool offersToClose = state.jobQuestion && owner;
        setWindowModality(offersToClose ? Qt::NonModal : Qt::WindowModal);
        if (offersToClose)
            new BlockedOwner(*owner, *this, [this] { offerToClose(); });
        if (!(state.style & WS_SYSMENU))
            setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint);  // no close box
        setAttribute(Qt::WA_KeyboardFocusChange);
        setTextFormat(Qt::PlainText);
        setIcon(iconOf(state.messageBoxType));
        setWindowTitle(toQt(state.text));
        setUp();
        if (state.jobQuestion)
            addAnswersForMore();
        // eventFilter() must get key presses before the buttons handle them.
        for (QWidget* child : findChildren<QWidget*>())
            child->installEventFilter(this);
        // By itself the toolkit would close the box when a button is clicked. But the box must stay until the window
        // core has handled the answer and destroys the window.
        auto* row = findChild<QDialogButtonBox*>();
        disconnect(row, nullptr, this, nullptr);
        connect(row, &QDialogButtonBox::clicked, this, [this](QAbstractButton* button) { press(button); });
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes) override { setWindowTitle(toQt(state.text)); }
    bool makesOwnControls() const override { return true; }
    void addControl(View&, const WindowState&) override {}
    void removeControl(View&) override {}

    void present() override { show(); }

    void reject() override { input().close(window()); }

protected:
    // The box is placed here, because it has no size before this event.
    void showEvent(QShowEvent* event) override
    {
        QMessageBox::showEvent(event);
        placeOverOwner(*this);
    }
    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        input().close(window());
    }
    // A key that was already down when the box appeared arrives only as a repeated key press. It was meant for another
    // window, so it must not answer the question.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
        if (isKey && static_cast<QKeyEvent*>(event)->isAutoRepeat()) {
            event->accept();
            return true;
        }
        return QMessageBox::eventFilter(watched, event);
    }
    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->isAutoRepeat())
            return;
        if (event->key() == Qt::Key_Escape)
            input().close(window());
        else if (QAbstractButton* meant = buttonFor(event->text()))
            press(meant);
        else
            QMessageBox::keyPressEvent(event);
    }

private:
    // Returns the button whose text begins with the typed letter. That letter presses the button, with or without Alt.
    QAbstractButton* buttonFor(const QString& typed) const
    {
        for (const auto& [button, window] : buttons_) {
            if (typed.size() == 1 && button->text().remove(u'&').startsWith(typed, Qt::CaseInsensitive))
                return button;
        }
        return nullptr;
    }

    void press(QAbstractButton* button)
    {
        if (button == stop_)
            input().stopJob(window(), closes_);
        const auto found = buttons_.find(button);
        WindowState state;
        if (found == buttons_.end() || !window::readWindow(found->second, state))
            return;
        if (checkBox() && checkBox()->isChecked())
            input().answerToAll(window(), state.id);
        else
            input().click(found->second);
    }

    // A job (a backup or restore) can ask the same question about thousands of files. So the box gets a check box that
    // repeats the answer for all further questions of this kind, and a button that stops the job.
    void addAnswersForMore()
    {
        setCheckBox(new QCheckBox(QStringLiteral("&Do the same for all further questions of this kind")));
        stop_ = addButton(QStringLiteral("&Stop the run"), QMessageBox::ResetRole);
        stop_->setAutoDefault(true);
        describeStop(QStringLiteral("What is done so far stays. The rest is left out."));
    }

    // Called when the user has asked to close the owner, which can close only when the job has ended. Changes the stop
    // button so that it stops the job and then closes the owner.
    void offerToClose()
    {
        closes_ = true;
        stop_->setText(QStringLiteral("&Stop the run and close"));
        describeStop(QStringLiteral("What is done so far stays. The rest is left out, and the window closes."));
        stop_->setFocus(Qt::OtherFocusReason);
    }

    void describeStop(const QString& text)
    {
        stop_->setToolTip(text);
        stop_->setAccessibleDescription(text);
    }

    void setUp()
    {
        QString texts;
        for (const HWND child : window::childrenOf(window())) {
            WindowState state;
            if (!window::readWindow(child, state))
                continue;
            if (state.kind == WindowKind::Button)
                addButtonOf(state);
            else if (state.kind == WindowKind::Static)
                texts += toQt(state.text);
        }
        texts.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        setText(breakable(texts, fontMetrics(), screen()->availableGeometry().width()));
        if (auto* label = findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
            label->setAccessibleName(texts);
            if (icon() == NoIcon)
                label->setContentsMargins({});
        }
        // Without an icon the toolkit still reserves the icon's column of the grid. So the empty column is made narrow
        // here.
        auto* grid = qobject_cast<QGridLayout*>(layout());
        if (QLayoutItem* first = grid ? grid->itemAtPosition(0, 0) : nullptr; first && icon() == NoIcon) {
            if (QSpacerItem* indent = first->spacerItem())
                indent->changeSize(1, 1, QSizePolicy::Fixed, QSizePolicy::Fixed);  // a column of width 0 would grow
        }
    }

    void addButtonOf(const WindowState& state)
    {
        const auto standard = desktopButton(state.id);
        QPushButton* button = standard ? addButton(*standard) : addButton(toQt(state.text), QMessageBox::ActionRole);
        button->setIcon({});  // like the buttons of a dialog's header
        buttons_[button] = state.window;
        if (state.defaultButton) {
            setDefaultButton(button);
            button->setFocus();
        }
    }

    std::map<QAbstractButton*, HWND> buttons_;
    QPushButton* stop_ = nullptr;  // only in a job's question
    bool closes_ = false;          // the user has asked to close the owner
};

}  // namespace

TopView* makeMessageView(const WindowState& state, const UserInput& input, QWidget* owner)
{
    return new MessageView(state, input, owner);
}

}  // namespace platform::qt
