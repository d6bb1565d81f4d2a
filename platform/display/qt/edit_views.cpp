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

// The common part of single-line and multi-line edits. The toolkit edits the text. After each change the view posts the
// whole text to the window core, which can limit the length. Derived classes connect the widget's signal to report().
template <class Widget>
class EditBase : public Widget, public View {
public:
    EditBase(HWND window, const UserInput& input, QWidget* parent) : Widget(parent), View(window, input) {}

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState& state, Changes changes) override
    {
        Widget::setReadOnly(state.readOnly);
        if (changes.has(Change::Text))
            followText(state);
    }

protected:
    virtual QString wholeText() const = 0;
    virtual void setWholeText(const QString& text) = 0;

    // Posts a change by the user.
    void report()
    {
        if (input().newText(this->window(), fromQt(wholeText())))
            return;
        // The window core has dropped the change, so the view shows the text that the window core still has.
        WindowState state;
        if (window::readWindow(this->window(), state))
            setIfDifferent(toQtUnchanged(state.text));
    }

    void focusInEvent(QFocusEvent* event) override
    {
        Widget::focusInEvent(event);
        if (event->reason() == Qt::MouseFocusReason)
            input().click(this->window());
    }

private:
    // Shows the text that the window core has. While the user types, the widget's text can be newer, because the
    // program may not have handled the latest input. So a widget with the focus keeps its own text until the program
    // waits for input.
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
    LineView(HWND window, const UserInput& input, QWidget* parent) : EditBase(window, input, parent)
    {
        connect(this, &QLineEdit::textChanged, this, [this] { report(); });
    }

    int rowMiddle() const override { return height() / 2; }

protected:
    QString wholeText() const override { return text(); }
    void setWholeText(const QString& text) override
    {
        const int cursor = cursorPosition();
        setText(text);
        setCursorPosition(std::min(cursor, static_cast<int>(text.size())));
    }
};

class LinesView final : public EditBase<QPlainTextEdit> {
public:
    LinesView(const WindowState& state, const UserInput& input, QWidget* parent)
        : EditBase(state.window, input, parent), outline_(this)
    {
        setTabChangesFocus(true);
        if (state.style & ES_AUTOHSCROLL)
            setLineWrapMode(QPlainTextEdit::NoWrap);
        connect(this, &QPlainTextEdit::textChanged, this, [this] { report(); });
    }

    void follow(const WindowState& state, Changes changes) override
    {
        EditBase::follow(state, changes);
        // In a read-only edit the user can select text by keyboard, and long lines wrap.
        if (!isReadOnly())
            return;
        setLineWrapMode(QPlainTextEdit::WidgetWidth);
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    }

protected:
    QString wholeText() const override { return withBreaks(toPlainText(), "\n", "\r\n"); }
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

View* makeEditView(const WindowState& state, const UserInput& input, QWidget* parent)
{
    if (state.style & ES_MULTILINE)
        return new LinesView(state, input, parent);
    return new LineView(state.window, input, parent);
}

}  // namespace platform::qt
