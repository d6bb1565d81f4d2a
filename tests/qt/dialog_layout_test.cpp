// dialog_layout_test.cpp - dialogs, messages and lists at several font sizes.
#include "desktop.h"

#include "ce/dialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDateEdit>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollBar>
#include <QTextDocument>

namespace {

const DialogOfMenu& Filter = dialogsOfMenu()[0];

// The parameter is the size of the font in points.
class DialogLayoutTest : public Desktop, public testing::WithParamInterface<int> {
protected:
    void SetUp() override
    {
        QFont font = usual_;
        font.setPointSize(GetParam());
        QApplication::setFont(font);
        Desktop::SetUp();
    }
    void TearDown() override
    {
        Desktop::TearDown();
        QApplication::setFont(usual_);
    }

private:
    QFont usual_ = QApplication::font();
};

std::vector<QWidget*> controlsOf(QWidget& dialog)
{
    std::vector<QWidget*> controls;
    for (QWidget* child : dialog.findChildren<QWidget*>()) {
        const bool isText = qobject_cast<QAbstractButton*>(child) || qobject_cast<QLabel*>(child);
        if (isText && child->isVisible() && !nameOf(*child).isEmpty())
            controls.push_back(child);
    }
    return controls;
}

int widthOfText(const QWidget& control)
{
    if (qobject_cast<const QCheckBox*>(&control) || qobject_cast<const QRadioButton*>(&control))
        return control.sizeHint().width();
    const auto* label = qobject_cast<const QLabel*>(&control);
    int widest = 0;
    for (const QString& line : (label ? label->text() : QString()).split(u'\n'))
        widest = std::max(widest, control.fontMetrics().horizontalAdvance(line));
    return widest;
}

// Returns the vertical middle of the control, or of its first line of text if it is a label.
int middleOf(const QWidget& control)
{
    return control.y() +
           (qobject_cast<const QLabel*>(&control) ? control.fontMetrics().height() : control.height()) / 2;
}

void expectWhole(QWidget& dialog, const QWidget& control, const std::vector<QWidget*>& all)
{
    SCOPED_TRACE((dialog.windowTitle() + ": " + nameOf(control)).toStdString());
    EXPECT_TRUE(dialog.rect().contains(QRect(control.mapTo(&dialog, QPoint()), control.size())));
    EXPECT_GE(control.width(), widthOfText(control));
    EXPECT_GE(control.height(), control.fontMetrics().height());
    for (const QWidget* other : all) {
        if (other == &control || other->parent() != control.parent())
            continue;
        const QRect both = control.geometry().intersected(other->geometry());
        EXPECT_LE(both.height(), control.height() / 4) << nameOf(*other).toStdString();
    }
}

TEST_P(DialogLayoutTest, NoTextIsCutAndRowsAreStraightAndApart)
{
    const std::vector<QStringList> rows{
        {"Maximum backup file size:", "MB"}, {"Archive", "System"}, {"Hidden", "Read-only"}};
    for (const DialogOfMenu& each : dialogsOfMenu()) {
        QWidget& dialog = open(each);
        const std::vector<QWidget*> controls = controlsOf(dialog);
        std::map<QString, int> middles;
        for (const QWidget* control : controls) {
            expectWhole(dialog, *control, controls);
            middles[nameOf(*control)] = middleOf(*control);
        }
        for (const QStringList& row : rows)
            EXPECT_EQ(middles[row.front()], middles[row.back()]) << row.front().toStdString();
        if (each.title == "Options") {
            EXPECT_EQ(middles["MB"], middleOf(*dialog.findChild<QLineEdit*>()));
        }
        leave(dialog);
    }
}

// A question must be shown to its end, although a name in it can be as long as the file system allows.
TEST_P(DialogLayoutTest, EveryMessageIsShownWhole)
{
    for (const QString& name :
         {QString(250, u'w'), QString(85, QChar(0x6F22)), QString(120, QChar(0x05D0)),
          QStringLiteral("e\u0301").repeated(80), QString::fromUcs4(U"\U0001F600").repeated(60)}) {
        SCOPED_TRACE(name.left(8).toStdString());
        const QString text = QStringLiteral("File:\\M\\%1\nexists replace ?").arg(name);
        QWidget& box = ask(text, "Warning", MB_YESNO | MB_ICONEXCLAMATION);
        const auto* label = box.findChild<QLabel*>("qt_msgbox_label");
        EXPECT_EQ(label->accessibleName(), text);
        EXPECT_GE(label->width(), label->minimumSizeHint().width());
        EXPECT_GE(label->height(), label->heightForWidth(label->width()));
        EXPECT_LE(box.width(), box.screen()->availableGeometry().width());
        // No break separates a surrogate pair, or a letter from its accent.
        EXPECT_EQ(QString::fromUtf8(label->text().toUtf8()), label->text());
        EXPECT_FALSE(label->text().contains(QStringLiteral("\u200B\u0301")));
        press(box, Qt::Key_N);
        awaitGone("Warning");
    }
    QWidget& box = ask("Override \\Storage Card\\QUILBOX\\QLBX0001.QLT file", "Info?", MB_YESNO);
    // Without an icon the text begins at the edge.
    EXPECT_LT(box.findChild<QLabel*>("qt_msgbox_label")->x(), 2 * box.layout()->contentsMargins().left());
    press(box, Qt::Key_N);
    awaitGone("Info?");
}

int widestRow(const QListView& list)
{
    int widest = 0;
    for (int row = 0; row < list.model()->rowCount(); ++row)
        widest = std::max(widest, list.sizeHintForIndex(list.model()->index(row, 0)).width());
    return widest;
}

// Returns the width in pixels that scrolling sideways can show.
int reachableWidth(const QListView& list)
{
    return list.horizontalScrollBar()->maximum() + list.viewport()->width();
}

TEST_P(DialogLayoutTest, ListScrollsToTheEndOfItsWidestRowWhereverThatIs)
{
    std::vector<std::u16string> rows;
    for (int row = 0; row < 2000; ++row)
        rows.push_back(u"File:\\" + QString::number(row).toStdU16String() + std::u16string(60, u'i'));
    // The widest row has fewer letters than the others and isn't the last one.
    rows[1234] = u"File:\\5" + std::u16string(50, u'W');
    const QListView& list = showRows(rows);
    const int widest = widestRow(list);
    EXPECT_GT(widest, list.viewport()->width());
    EXPECT_TRUE(eventually([&] { return reachableWidth(list) == widest; })) << reachableWidth(list);
    EXPECT_TRUE(list.horizontalScrollBar()->isVisible());
    leave(*list.window());
}

TEST_P(DialogLayoutTest, WidthThatTheProgramAsksForCountsOnlyWhereARowIsCut)
{
    for (const bool isCut : {false, true}) {
        const QListView& list = showRows({u"Registry", std::u16string(isCut ? 60 : 1, u'W')}, 3000);
        EXPECT_EQ(list.horizontalScrollBar()->isVisible(), isCut);
        EXPECT_EQ(reachableWidth(list) > std::max(widestRow(list), list.viewport()->width()), isCut);
        leave(*list.window());
    }
}

INSTANTIATE_TEST_SUITE_P(Fonts, DialogLayoutTest, testing::Values(7, 9, 11, 18, 24));

using DialogInputTest = Desktop;

TEST_F(DialogInputTest, DefaultButtonIsTheOneThatEnterPresses)
{
    QWidget& dialog = open(Filter);
    EXPECT_TRUE(eventually([&] { return dialog.isActiveWindow(); }));
    const auto expectDefault = [&](const QString& name) {
        for (const QPushButton* button : dialog.findChildren<QPushButton*>())
            EXPECT_EQ(button->isDefault(), nameOf(*button) == name) << nameOf(*button).toStdString();
    };
    expectDefault("OK");
    click(dialog, "Show only files with these extentions :");
    type(dialog, "txt");
    press(dialog, Qt::Key_Tab);
    expectDefault("Add");
    press(dialog, Qt::Key_Space);
    expectDefault("OK");  // the program gives the focus back to the edit
    // Enter presses a button of the caption that has the focus.
    tabTo(dialog, [](QWidget& widget) { return nameOf(widget) == "Cancel"; });
    expectDefault("Cancel");
    press(dialog, Qt::Key_Return);
    awaitGone(Filter.title);
}

TEST_F(DialogInputTest, DateIsTheOneThatWasTypedAndItsYearIsShownWhole)
{
    const QLocale usual;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    QWidget& dialog = open(Filter);
    auto* date = dialog.findChild<QDateEdit*>();
    EXPECT_TRUE(date->text().endsWith(QString::number(date->date().year()))) << date->text().toStdString();
    click(dialog, "Show files newer than :");
    const auto typeAndPress = [&](const QString& digits, Qt::Key key) {
        tabTo(dialog, [&](QWidget& widget) { return &widget == date; });
        type(dialog, digits);
        press(dialog, key);
    };
    typeAndPress("12251998", Qt::Key_Tab);
    EXPECT_EQ(date->date(), QDate(1998, 12, 25)) << date->text().toStdString();
    // Two digits of a year mean the nearest year that ends with them, both after Tab and after Enter, which presses OK.
    typeAndPress("030599", Qt::Key_Tab);
    EXPECT_EQ(date->date(), QDate(1999, 3, 5)) << date->text().toStdString();
    typeAndPress("040698", Qt::Key_Return);
    awaitGone(Filter.title);
    QWidget& again = open(Filter);
    EXPECT_EQ(again.findChild<QDateEdit*>()->date(), QDate(1998, 4, 6));
    QLocale::setDefault(usual);
    leave(again);
}

TEST_F(DialogInputTest, ArrowsWithControlScrollAListAndMoveNoSelection)
{
    QListView& list = showRows({u"a", u"b", std::u16string(80, u'W')});
    QWidget& dialog = *list.window();
    tabTo(dialog, [&](QWidget& widget) { return &widget == &list; });
    press(dialog, Qt::Key_Home);
    press(dialog, Qt::Key_Right, Qt::ControlModifier);
    const QScrollBar& bar = *list.horizontalScrollBar();
    EXPECT_GT(bar.value(), 0);
    EXPECT_LT(bar.value(), list.viewport()->width());
    EXPECT_EQ(list.currentIndex().row(), 0);
    press(dialog, Qt::Key_Right);  // without Ctrl the key selects another row
    EXPECT_EQ(list.currentIndex().row(), 1);
    EXPECT_GT(bar.value(), 0);
    press(dialog, Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(bar.value(), 0);
    leave(dialog);
}

// A line break is shown as a symbol from another font.
TEST_F(DialogInputTest, LettersOfARowAreAtTheSameHeightWhateverOtherCharactersItHas)
{
    QListView& list = showRows({u"ab", u"ab\n"});
    const auto letters = [&](int row) {
        QRect rect = list.visualRect(list.model()->index(row, 0));
        rect.setWidth(list.fontMetrics().horizontalAdvance("ab"));
        return list.viewport()->grab(rect).toImage();
    };
    EXPECT_EQ(letters(0), letters(1));
    leave(*list.window());
}

TEST_F(DialogInputTest, TipShowsTheWholeTextOfARowThatIsCut)
{
    const QString shortRow = "Registry";
    const QString longRow = "File:\\<b>%1</b>  & more\\" + QString(200, u'w');
    QListView& list = showRows({shortRow.toStdU16String(), longRow.toStdU16String()});
    const auto tipOf = [&](const QString& row) {
        QTextDocument text;
        text.setHtml(tipAt(list, QPoint(20, list.visualRect(findRow(*list.model(), row)).center().y())));
        return text.toPlainText().remove(QChar(0x200B));
    };
    EXPECT_EQ(tipOf(longRow), longRow);
    EXPECT_TRUE(eventually([&] { return tipOf(shortRow).isEmpty(); }));
    list.horizontalScrollBar()->setValue(20);
    EXPECT_EQ(tipOf(shortRow), shortRow);
    leave(*list.window());
}

}  // namespace
