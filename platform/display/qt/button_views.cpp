// button_views.cpp - push buttons, check boxes, radio buttons, group boxes.

#include "ce/controls.h"
#include "view_makers.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>

#include <type_traits>

namespace platform::qt {

namespace {

using window::Change;
using window::WindowState;

// The focus comes from the core alone, so a press that slips off the button takes it from nobody. Tab is the
// core's as well; the policy tells a screen reader that the button can have it.
void takeFocusFromCore(QWidget& button)
{
    button.setFocusPolicy(Qt::TabFocus);
}

class PushView final : public QPushButton, public View {
public:
    PushView(HWND window, const Courier& courier, QWidget* parent) : QPushButton(parent), View(window, courier)
    {
        setAutoDefault(false);
        takeFocusFromCore(*this);
        connect(this, &QPushButton::clicked, this, [this] { this->courier().click(this->window()); });
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        if (changes.has(Change::Text))
            setText(toQt(state.text));
    }

    [[nodiscard]] int leastWidth() const override
    {
        return fontMetrics().size(Qt::TextShowMnemonic, text()).width() +
               4 * style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, this) +
               style()->pixelMetric(QStyle::PM_ButtonMargin, nullptr, this);
    }
    [[nodiscard]] int rowMiddle() const override { return height() / 2; }
};

// A check box or a radio button.
template <class Button>
class CheckView final : public Button, public View {
public:
    CheckView(HWND window, const Courier& courier, QWidget* parent) : Button(parent), View(window, courier)
    {
        Button::setAutoExclusive(isRadio);
        takeFocusFromCore(*this);
        QObject::connect(this, &Button::clicked, this, [this] { this->courier().click(this->window()); });
        QObject::connect(this, &Button::toggled, this, [this] { refuseToggle(); });
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        if (changes.has(Change::Text))
            Button::setText(toQt(state.text));
        checked_ = state.check != 0;
        showChecked();
    }

    [[nodiscard]] int leastWidth() const override { return Button::sizeHint().width(); }
    // Rows of check boxes stand closer in the template than some styles draw them: the whole hint, on the
    // row's middle.
    [[nodiscard]] QRect placeIn(const QRect& place) const override
    {
        QRect whole = place;
        whole.setHeight(std::max(place.height(), Button::sizeHint().height()));
        whole.moveCenter({whole.center().x(), place.center().y()});
        return whole;
    }
    [[nodiscard]] int rowMiddle() const override { return Button::height() / 2; }
    [[nodiscard]] QString label() const override { return Button::text(); }

protected:
    void nextCheckState() override {}

private:
    // A screen reader toggles without a click. To the core it was one.
    void refuseToggle()
    {
        if (following_)
            return;
        const bool wanted = Button::isChecked();
        showChecked();
        // The neighbour that the toolkit has cleared on the way wasn't meant.
        if (!isRadio || wanted)
            courier().click(this->window());
    }

    // Exclusive buttons are what makes a radio button to a screen reader, but which ones belong together is
    // known to the core alone.
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
    GroupView(HWND window, const Courier& courier, QWidget* parent) : QGroupBox(parent), View(window, courier)
    {
        // Its buttons are its neighbours, not its children: they must get the mouse.
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

    [[nodiscard]] int leastWidth() const override { return minimumSizeHint().width(); }
};

}  // namespace

View* makeButtonView(const WindowState& state, const Courier& courier, QWidget* parent)
{
    switch (state.style & 0xF) {
    case BS_CHECKBOX:
    case BS_AUTOCHECKBOX:
    case BS_3STATE:
    case BS_AUTO3STATE:
        return new CheckView<QCheckBox>(state.window, courier, parent);
    case BS_RADIOBUTTON:
    case BS_AUTORADIOBUTTON:
        return new CheckView<QRadioButton>(state.window, courier, parent);
    case BS_GROUPBOX:
        return new GroupView(state.window, courier, parent);
    default:
        return new PushView(state.window, courier, parent);
    }
}

}  // namespace platform::qt
