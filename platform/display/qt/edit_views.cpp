// edit_views.cpp - edit controls, with one line or many.

#include "focus_outline.h"
#include "view_makers.h"

#include "ce/controls.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalBlocker>

namespace platform::qt {

namespace {

using window::Change;
using window::WindowState;

QString withBreaks(QString text, const char* from, const char* to)
{
    return text.replace(QLatin1String(from), QLatin1String(to));
}

// What both kinds share. Derived gives text(), setWholeText() and the widget's own signals.
template <class Widget>
class EditBase : public Widget, public View {
public:
    EditBase(HWND window, const Courier& courier, QWidget* parent) : Widget(parent), View(window, courier) {}

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        Widget::setReadOnly(state.readOnly);
        if (changes.has(Change::Text))
            followText(state);
    }

protected:
    [[nodiscard]] virtual QString wholeText() const = 0;
    virtual void setWholeText(const QString& text) = 0;

    // The user has changed it.
    void report()
    {
        if (courier().newText(this->window(), fromQt(wholeText())))
            return;
        // Dropped: it never was changed.
        WindowState state;
        if (window::readWindow(this->window(), state))
            setIfDifferent(toQtUnchanged(state.text));
    }

    void focusInEvent(QFocusEvent* event) override
    {
        Widget::focusInEvent(event);
        if (event->reason() == Qt::MouseFocusReason)
            courier().click(this->window());
    }

private:
    // While typed text is still on its way to the program, what the core holds is older than the widget.
    void followText(const WindowState& state)
    {
        if (!Widget::hasFocus() || window::takesInput(this->window()))
            setIfDifferent(toQtUnchanged(state.text));
    }

    void setIfDifferent(const QString& text)
    {
        if (text == wholeText())
            return;
        const QSignalBlocker silent(this);
        setWholeText(text);
    }
};

class LineView final : public EditBase<QLineEdit> {
public:
    LineView(HWND window, const Courier& courier, QWidget* parent) : EditBase(window, courier, parent)
    {
        connect(this, &QLineEdit::textChanged, this, [this] { report(); });
    }

    [[nodiscard]] int rowMiddle() const override { return height() / 2; }

protected:
    [[nodiscard]] QString wholeText() const override { return text(); }
    void setWholeText(const QString& text) override
    {
        const int cursor = cursorPosition();
        setText(text);
        setCursorPosition(std::min(cursor, static_cast<int>(text.size())));
    }
};

class LinesView final : public EditBase<QPlainTextEdit> {
public:
    LinesView(const WindowState& state, const Courier& courier, QWidget* parent)
        : EditBase(state.window, courier, parent), outline_(this)
    {
        setTabChangesFocus(true);
        if (state.style & ES_AUTOHSCROLL)
            setLineWrapMode(QPlainTextEdit::NoWrap);
        connect(this, &QPlainTextEdit::textChanged, this, [this] { report(); });
    }

    void follow(const WindowState& state, Changes changes) override
    {
        EditBase::follow(state, changes);
        // A text that can't be changed is still read and copied by keyboard, and long lines aren't cut.
        if (!isReadOnly())
            return;
        setLineWrapMode(QPlainTextEdit::WidgetWidth);
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }

protected:
    [[nodiscard]] QString wholeText() const override { return withBreaks(toPlainText(), "\n", "\r\n"); }
    void setWholeText(const QString& text) override
    {
        const int position = textCursor().position();
        setPlainText(withBreaks(text, "\r\n", "\n"));
        QTextCursor cursor = textCursor();
        cursor.setPosition(std::min(position, document()->characterCount() - 1));
        setTextCursor(cursor);
    }

private:
    FocusOutline outline_;
};

}  // namespace

View* makeEditView(const WindowState& state, const Courier& courier, QWidget* parent)
{
    if (state.style & ES_MULTILINE)
        return new LinesView(state, courier, parent);
    return new LineView(state.window, courier, parent);
}

}  // namespace platform::qt
