// message_view.cpp - a message box of the core as the desktop's own.

#include "view_makers.h"

#include "ce/dialog.h"

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

// The desktop's own button, with its words in the user's language and its mnemonic.
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

class MessageView final : public QMessageBox, public TopView {
public:
    MessageView(const WindowState& state, const Courier& courier, QWidget* owner)
        : QMessageBox(owner), TopView(state.window, courier)
    {
        setWindowModality(Qt::WindowModal);
        setAttribute(Qt::WA_KeyboardFocusChange);
        setTextFormat(Qt::PlainText);
        setIcon(iconOf(state.messageBoxType));
        setWindowTitle(toQt(state.text));
        setUp();
        // A box closes itself when a button is pressed; this one stays until the core takes it away.
        auto* row = findChild<QDialogButtonBox*>();
        disconnect(row, nullptr, this, nullptr);
        connect(row, &QDialogButtonBox::clicked, this, [this](QAbstractButton* button) { press(button); });
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes) override { setWindowTitle(toQt(state.text)); }
    [[nodiscard]] bool bringsItsControls() const override { return true; }
    void addControl(View&, const WindowState&) override {}
    void removeControl(View&) override {}

    void present() override { show(); }

    void reject() override { courier().close(window()); }

protected:
    // Only now the box knows its size.
    void showEvent(QShowEvent* event) override
    {
        QMessageBox::showEvent(event);
        placeOverOwner(*this);
    }
    void closeEvent(QCloseEvent* event) override
    {
        event->ignore();
        courier().close(window());
    }
    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->key() == Qt::Key_Escape)
            courier().close(window());
        else if (QAbstractButton* meant = buttonFor(event->text()))
            press(meant);
        else
            QMessageBox::keyPressEvent(event);
    }

private:
    // The first letter of an answer chooses it, with or without Alt.
    [[nodiscard]] QAbstractButton* buttonFor(const QString& typed) const
    {
        for (const auto& [button, window] : buttons_)
            if (typed.size() == 1 && button->text().remove(u'&').startsWith(typed, Qt::CaseInsensitive))
                return button;
        return nullptr;
    }

    void press(QAbstractButton* button)
    {
        if (const auto found = buttons_.find(button); found != buttons_.end())
            courier().click(found->second);
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
        // The toolkit keeps the place of an icon that isn't there.
        auto* grid = qobject_cast<QGridLayout*>(layout());
        if (QLayoutItem* first = grid ? grid->itemAtPosition(0, 0) : nullptr; first && icon() == NoIcon) {
            if (QSpacerItem* indent = first->spacerItem())
                indent->changeSize(1, 1, QSizePolicy::Fixed, QSizePolicy::Fixed);  // a column of nothing would grow
        }
    }

    void addButtonOf(const WindowState& state)
    {
        const auto standard = desktopButton(state.id);
        QPushButton* button = standard ? addButton(*standard) : addButton(toQt(state.text), QMessageBox::ActionRole);
        button->setIcon({});  // the caption's buttons have none either
        buttons_[button] = state.window;
        if (state.defaultButton) {
            setDefaultButton(button);
            button->setFocus();
        }
    }

    std::map<QAbstractButton*, HWND> buttons_;
};

}  // namespace

TopView* makeMessageView(const WindowState& state, const Courier& courier, QWidget* owner)
{
    return new MessageView(state, courier, owner);
}

}  // namespace platform::qt
