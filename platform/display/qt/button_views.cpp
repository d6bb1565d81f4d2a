#include "ce/controls.h"
#include "view_makers.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>

#include <string_view>
#include <type_traits>

namespace platform::qt {

namespace {

using window::Change;
using window::WindowState;

// The text of a check box whose setting is stored but has no effect on a backup or restore. A tip on this check box
// says so.
constexpr std::u16string_view VerifyText = u"Verify backuped file";

// Sets the focus policy of a button. A mouse press must not move the focus, because the window core moves the focus
// after the click. The window core handles Tab too. Qt::TabFocus is set only because a screen reader would otherwise
// treat the button as one that can't have the focus.
void acceptFocus(QWidget& button)
{
    button.setFocusPolicy(Qt::TabFocus);
}

class PushView final : public QPushButton, public View {
public:
    PushView(HWND window, const UserInput& input, QWidget* parent) : QPushButton(parent), View(window, input)
    {
        setAutoDefault(false);
        acceptFocus(*this);
        connect(this, &QPushButton::clicked, this, [this] { this->input().click(this->window()); });
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        if (changes.has(Change::Text))
            setText(toQt(state.text));
    }

    int leastWidth() const override
    {
        return fontMetrics().size(Qt::TextShowMnemonic, text()).width() +
               4 * style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, this) +
               style()->pixelMetric(QStyle::PM_ButtonMargin, nullptr, this);
    }
    int rowMiddle() const override { return height() / 2; }
};

// A check box or a radio button. A click doesn't change the state of the widget. The window core decides about the new
// state, and follow() shows it.
template <class Button>
class CheckView final : public Button, public View {
public:
    CheckView(HWND window, const UserInput& input, QWidget* parent) : Button(parent), View(window, input)
    {
        Button::setAutoExclusive(isRadio);
        acceptFocus(*this);
        QObject::connect(this, &Button::clicked, this, [this] { this->input().click(this->window()); });
        QObject::connect(this, &Button::toggled, this, [this] { refuseToggle(); });
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        if (changes.has(Change::Text))
            Button::setText(toQt(state.text));
        if (changes.has(Change::Text) && state.text == VerifyText)
            Button::setToolTip(QStringLiteral("This setting is stored, but has no effect"));
        checked_ = state.check != 0;
        showChecked();
    }

    int leastWidth() const override { return Button::sizeHint().width(); }
    // Some styles draw a check box taller than its row in the template. In that case the widget gets the height that
    // the style needs, and its middle stays at the middle of the row.
    QRect geometryIn(const QRect& rect) const override
    {
        QRect whole = rect;
        whole.setHeight(std::max(rect.height(), Button::sizeHint().height()));
        whole.moveCenter({whole.center().x(), rect.center().y()});
        return whole;
    }
    int rowMiddle() const override { return Button::height() / 2; }
    QString label() const override { return Button::text(); }

protected:
    void nextCheckState() override {}

private:
    // Called when the widget is toggled. If showChecked() didn't toggle the widget, one of two things has happened: a
    // screen reader has toggled this button without a click, or it has checked another radio button, and the toolkit
    // has unchecked this one. In both cases this function undoes the toggle. It posts a click to the window core only
    // in the first case.
    void refuseToggle()
    {
        if (following_)
            return;
        const bool wanted = Button::isChecked();
        showChecked();
        // The user didn't toggle a radio button that the toolkit has unchecked, so no click on it is posted.
        if (!isRadio || wanted)
            input().click(this->window());
    }

    // Shows the checked state. Only the window core knows which radio buttons form a group, so the toolkit must not
    // uncheck other buttons here. That is why autoExclusive is off during the change. A radio button has this property
    // at all other times, because screen readers recognise radio buttons by it.
    void showChecked()
    {
        following_ = true;
        Button::setAutoExclusive(false);
        Button::setChecked(checked_);
        Button::setAutoExclusive(isRadio);
        following_ = false;
    }

    static constexpr bool isRadio = std::is_same_v<Button, QRadioButton>;

    bool checked_ = false;
    bool following_ = false;
};

class GroupView final : public QGroupBox, public View {
public:
    GroupView(HWND window, const UserInput& input, QWidget* parent) : QGroupBox(parent), View(window, input)
    {
        // The buttons inside the group box are its siblings. They must receive the mouse events.
        setAttribute(Qt::WA_TransparentForMouseEvents);
        lower();
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        if (changes.has(Change::Text))
            setTitle(toQt(state.text));
    }

    int leastWidth() const override { return minimumSizeHint().width(); }
};

}  // namespace

View* makeButtonView(const WindowState& state, const UserInput& input, QWidget* parent)
{
    switch (state.style & 0xF) {
    case BS_CHECKBOX:
    case BS_AUTOCHECKBOX:
    case BS_3STATE:
    case BS_AUTO3STATE:
        return new CheckView<QCheckBox>(state.window, input, parent);
    case BS_RADIOBUTTON:
    case BS_AUTORADIOBUTTON:
        return new CheckView<QRadioButton>(state.window, input, parent);
    case BS_GROUPBOX:
        return new GroupView(state.window, input, parent);
    default:
        return new PushView(state.window, input, parent);
    }
}

}  // namespace platform::qt
