#include "controls/date_display.h"
#include "keys.h"
#include "view_makers.h"

#include "ce/window.h"

#include <QDateEdit>
#include <QFocusEvent>
#include <QLineEdit>
#include <QStyleOption>

#include <algorithm>

namespace platform::qt {

namespace {

using window::Change;
using window::WindowState;

// The earliest date that a FILETIME can contain.
const QDate FirstDate(1601, 1, 1);
constexpr int Century = 100;
constexpr int YearsAhead = 20;

class PickerView final : public QDateEdit, public View {
public:
    PickerView(const WindowState& state, const UserInput& input, QWidget* parent)
        : QDateEdit(parent), View(state.window, input)
    {
        setCalendarPopup(true);
        // The format of the user's locale may have a year of two digits, which leaves the century open. The view shows
        // all four digits.
        if (QString format = displayFormat(); !format.contains(QLatin1String("yyyy")))
            setDisplayFormat(format.replace(QLatin1String("yy"), QLatin1String("yyyy")));
        setMinimumDate(FirstDate);
        connect(this, &QDateEdit::dateChanged, this, [this](QDate date) { post(date); });
    }

    using View::window;
    QWidget& widget() override { return *this; }

    void follow(const WindowState&, Changes changes) override
    {
        if (changes.has(Change::Date))
            followDate();
    }

    // Returns a width that includes the calendar's arrow. The toolkit's size hint is that of a spin box, but some
    // styles draw the calendar's arrow wider than the arrows of a spin box.
    int leastWidth() const override
    {
        QStyleOptionComboBox box;
        box.initFrom(this);
        box.editable = true;
        box.rect = QRect(QPoint(), sizeHint());
        const QRect field = style()->subControlRect(QStyle::CC_ComboBox, &box, QStyle::SC_ComboBoxEditField, this);
        QStyleOptionFrame frame;
        frame.initFrom(lineEdit());
        const QSize text(widestDate() + 2 * fontMetrics().averageCharWidth(), fontMetrics().height());
        const int needed = style()->sizeFromContents(QStyle::CT_LineEdit, &frame, text, lineEdit()).width();
        return std::max(box.rect.width(), needed + box.rect.width() - field.width());
    }
    // The height in the program's template is too small for current fonts, so the view can be higher. The view can also
    // be wider than in the template. In that case the view grows to the left, where there is free space.
    QRect geometryIn(const QRect& rect) const override
    {
        QRect whole = rect;
        whole.setLeft(std::min(rect.left(), rect.right() + 1 - leastWidth()));
        whole.setHeight(std::max(rect.height(), sizeHint().height()));
        return whole;
    }
    int rowMiddle() const override { return height() / 2; }

protected:
    bool event(QEvent* event) override
    {
        // Completes the year before the dialog handles Enter. The toolkit sends this event before the key press.
        if (event->type() == QEvent::ShortcutOverride &&
            virtualKeyOf(static_cast<const QKeyEvent&>(*event)) == VK_RETURN)
            completeYear();
        return QDateEdit::event(event);
    }

    void focusOutEvent(QFocusEvent* event) override
    {
        completeYear();
        QDateEdit::focusOutEvent(event);
    }

    void focusInEvent(QFocusEvent* event) override
    {
        QDateEdit::focusInEvent(event);
        if (event->reason() == Qt::MouseFocusReason)
            input().click(window());
    }

private:
    int widestDate() const
    {
        int widest = 0;
        for (int month = 1; month <= 12; ++month) {
            const QString text = locale().toString(QDate(2028, month, 28), displayFormat());
            widest = std::max(widest, fontMetrics().horizontalAdvance(text));
        }
        return widest;
    }

    // Completes the year if the user has typed only two digits of it. Without this function, the toolkit would drop
    // these digits. The completed year is at most YearsAhead years in the future.
    void completeYear()
    {
        QString shortFormat = displayFormat();
        shortFormat.replace(QLatin1String("yyyy"), QLatin1String("yy"));
        const QDate read = locale().toDate(text(), shortFormat);
        if (!read.isValid())
            return;
        const int thisYear = QDate::currentDate().year();
        int year = thisYear / Century * Century + read.year() % Century;
        if (year > thisYear + YearsAhead)
            year -= Century;
        setDate(QDate(year, read.month(), read.day()));
    }

    void followDate()
    {
        SYSTEMTIME date{};
        if (!window::readDate(window(), date))
            return;
        const QDate wanted(date.wYear, date.wMonth, date.wDay);
        // Setting the same date again would remove the digits that the user is typing into a field.
        if (wanted == this->date())
            return;
        following_ = true;
        setDate(wanted);
        following_ = false;
    }

    void post(QDate date)
    {
        if (following_)
            return;
        SYSTEMTIME chosen{};
        chosen.wYear = static_cast<WORD>(date.year());
        chosen.wMonth = static_cast<WORD>(date.month());
        chosen.wDay = static_cast<WORD>(date.day());
        if (!input().date(window(), chosen))
            followDate();
    }

    bool following_ = false;
};

}  // namespace

View* makeDateView(const WindowState& state, const UserInput& input, QWidget* parent)
{
    return new PickerView(state, input, parent);
}

}  // namespace platform::qt
