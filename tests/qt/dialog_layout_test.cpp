// dialog_layout_test.cpp - dialogs as their templates and the user's font make them.

#include "desktop.h"

#include "ce/controls.h"
#include "ce/dialog.h"
#include "ce/resource.h"

#include <QApplication>
#include <QCheckBox>
#include <QDateEdit>
#include <QHelpEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollBar>
#include <QTextDocument>
#include <QToolTip>
#include <QtTest/QTest>

#include <thread>
#include <vector>

namespace {

// Every dialog that a menu item opens, at a font of the given size in points.
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
        const bool shown = qobject_cast<QAbstractButton*>(child) || qobject_cast<QLabel*>(child);
        if (shown && child->isVisible() && !nameOf(*child).isEmpty())
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

TEST_P(DialogLayoutTest, NoTextIsCutAndNoRowsOverlap)
{
    const std::vector<std::pair<QStringList, QString>> dialogs{
        {{"File", "Filter..."}, "File filter"},
        {{"File", "Options..."}, "Options"},
        {{"File", "About..."}, "Quillbox"},
        {{"Operations", "Backup", "Full..."}, "Full Backup"},
    };
    for (const auto& [path, title] : dialogs) {
        choose(path);
        QWidget& dialog = await(title);
        const std::vector<QWidget*> controls = controlsOf(dialog);
        for (const QWidget* control : controls) {
            SCOPED_TRACE((title + ": " + nameOf(*control)).toStdString());
            const QRect there(control->mapTo(&dialog, QPoint()), control->size());
            EXPECT_TRUE(dialog.rect().contains(there));
            EXPECT_GE(control->width(), widthOfText(*control));
            EXPECT_GE(control->height(), control->fontMetrics().height());
            for (const QWidget* other : controls) {
                if (other == control || other->parent() != control->parent())
                    continue;
                const QRect both = control->geometry().intersected(other->geometry());
                EXPECT_LE(both.height(), control->height() / 4) << nameOf(*other).toStdString();
            }
        }
        press(dialog, Qt::Key_Escape);
        awaitGone(title);
    }
}

TEST_P(DialogLayoutTest, TextsOfARowStandOnOneLine)
{
    const auto middleOf = [](QWidget& dialog, const QString& text) {
        for (QWidget* child : controlsOf(dialog))
            if (nameOf(*child) == text)
                return child->y() +
                       (qobject_cast<QLabel*>(child) ? child->fontMetrics().height() : child->height()) / 2;
        return -1;
    };
    choose({"File", "Options..."});
    QWidget& options = await("Options");
    EXPECT_EQ(middleOf(options, "Maximum backup file size:"), middleOf(options, "MB"));
    const auto* size = options.findChild<QLineEdit*>();
    EXPECT_EQ(middleOf(options, "MB"), size->y() + size->height() / 2);
    press(options, Qt::Key_Escape);
    awaitGone("Options");
    choose({"File", "Filter..."});
    QWidget& filter = await("File filter");
    EXPECT_EQ(middleOf(filter, "Archive"), middleOf(filter, "System"));
    EXPECT_EQ(middleOf(filter, "Hidden"), middleOf(filter, "Read-only"));
    EXPECT_LT(middleOf(filter, "Archive"), middleOf(filter, "Hidden"));
    press(filter, Qt::Key_Escape);
    awaitGone("File filter");
}

// Cuts a question off nobody could answer it: a name may be as long as a file system allows.
TEST_P(DialogLayoutTest, EveryMessageIsReadWhole)
{
    const QStringList names{QString(250, u'w'), QString(85, QChar(0x6F22)), QString(120, QChar(0x05D0)),
                            QStringLiteral("e\u0301").repeated(80), QString::fromUcs4(U"\U0001F600").repeated(60)};
    for (const QString& name : names) {
        SCOPED_TRACE(name.left(8).toStdString());
        const QString text = QStringLiteral("File:\\M\\%1\nexists replace ?").arg(name);
        std::thread asking(
            [&] { MessageBoxW(nullptr, text.toStdU16String().c_str(), u"Warning", MB_YESNO | MB_ICONEXCLAMATION); });
        QWidget& box = await("Warning");
        const auto* label = box.findChild<QLabel*>("qt_msgbox_label");
        EXPECT_EQ(label->accessibleName(), text);
        EXPECT_GE(label->width(), label->minimumSizeHint().width());
        EXPECT_GE(label->height(), label->heightForWidth(label->width()));
        EXPECT_LE(box.width(), box.screen()->availableGeometry().width());
        // No sign is torn apart.
        EXPECT_EQ(QString::fromUtf8(label->text().toUtf8()), label->text());
        EXPECT_FALSE(label->text().contains(QStringLiteral("\u200B\u0301")));
        press(box, Qt::Key_Escape);
        awaitGone("Warning");
        asking.join();
    }
}

TEST_P(DialogLayoutTest, MessageWithoutAnIconBeginsAtTheBoxesEdge)
{
    std::thread asking(
        [&] { MessageBoxW(nullptr, u"Override \\Storage Card\\QUILBOX\\QLBX0001.QLT file", u"Info?", MB_YESNO); });
    QWidget& box = await("Info?");
    EXPECT_LT(box.findChild<QLabel*>("qt_msgbox_label")->x(), 2 * box.layout()->contentsMargins().left());
    press(box, Qt::Key_Escape);
    awaitGone("Info?");
    asking.join();
}

INSTANTIATE_TEST_SUITE_P(Fonts, DialogLayoutTest, testing::Values(7, 9, 11, 18, 24));

using DialogFrameTest = Desktop;

TEST_F(DialogFrameTest, DefaultFrameStandsAroundWhatEnterPresses)
{
    choose({"File", "Filter..."});
    QWidget& dialog = await("File filter");
    ASSERT_TRUE(QTest::qWaitFor([&] { return dialog.isActiveWindow(); }, 60000));
    const auto defaults = [&] {
        QStringList names;
        for (const QPushButton* button : dialog.findChildren<QPushButton*>())
            if (button->isDefault())
                names += nameOf(*button);
        return names;
    };
    EXPECT_EQ(defaults(), QStringList("OK"));
    click(dialog, "Show only files with these extentions :");
    type(dialog, "txt");
    press(dialog, Qt::Key_Tab);
    EXPECT_EQ(defaults(), QStringList("Add"));
    press(dialog, Qt::Key_Space);
    // The program gives the keyboard back to the edit.
    ASSERT_TRUE(qobject_cast<QLineEdit*>(dialog.focusWidget()));
    EXPECT_EQ(defaults(), QStringList("OK"));
    // Enter on a button of the caption is its click.
    press(dialog, Qt::Key_Backtab, Qt::ShiftModifier);
    while (nameOf(*dialog.focusWidget()) != "Cancel")
        press(dialog, Qt::Key_Tab);
    EXPECT_EQ(defaults(), QStringList("Cancel"));
    press(dialog, Qt::Key_Return);
    awaitGone("File filter");
}

TEST_F(DialogFrameTest, DateIsTheOneThatWasTypedAndItsYearIsShownWhole)
{
    const QLocale usual;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    choose({"File", "Filter..."});
    QWidget& dialog = await("File filter");
    auto* date = dialog.findChild<QDateEdit*>();
    EXPECT_TRUE(date->text().endsWith(QString::number(date->date().year()))) << date->text().toStdString();
    click(dialog, "Show files newer than :");
    while (dialog.focusWidget() != date)
        press(dialog, Qt::Key_Tab);
    type(dialog, "12251998");
    EXPECT_EQ(date->date(), QDate(1998, 12, 25)) << date->text().toStdString();
    // A year of two digits is the near one.
    press(dialog, Qt::Key_Backtab, Qt::ShiftModifier);
    press(dialog, Qt::Key_Tab);
    type(dialog, "030599");
    press(dialog, Qt::Key_Tab);
    EXPECT_EQ(date->date(), QDate(1999, 3, 5)) << date->text().toStdString();
    press(dialog, Qt::Key_Backtab, Qt::ShiftModifier);
    type(dialog, "040698");
    press(dialog, Qt::Key_Return);
    awaitGone("File filter");
    choose({"File", "Filter..."});
    QWidget& again = await("File filter");
    EXPECT_EQ(again.findChild<QDateEdit*>()->date(), QDate(1998, 4, 6));
    QLocale::setDefault(usual);
    press(again, Qt::Key_Escape);
    awaitGone("File filter");
}

// A list box of the program's, with these rows and what it asks for as their width, in a dialog called "Rows".
struct RowsDialog {
    std::vector<std::u16string> rows;
    int extent = 0;

    void run()
    {
        const HRSRC form = FindResourceW(nullptr, MAKEINTRESOURCEW(109), RT_DIALOG);
        DialogBoxIndirectParamW(nullptr, LoadResource(nullptr, form), nullptr, procedure,
                                reinterpret_cast<LPARAM>(this));
    }

private:
    static INT_PTR procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
    {
        if (message == WM_INITDIALOG) {
            auto& made = *reinterpret_cast<RowsDialog*>(lParam);
            SetWindowTextW(dialog, u"Rows");
            for (const std::u16string& row : made.rows)
                SendDlgItemMessageW(dialog, 1006, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row.c_str()));
            if (made.extent)
                SendDlgItemMessageW(dialog, 1006, LB_SETHORIZONTALEXTENT, static_cast<WPARAM>(made.extent), 0);
        } else if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) {
            EndDialog(dialog, 0);
        }
        return FALSE;
    }
};

int widestRow(const QListView& list)
{
    int widest = 0;
    for (int row = 0; row < list.model()->rowCount(); ++row)
        widest = std::max(widest, list.sizeHintForIndex(list.model()->index(row, 0)).width());
    return widest;
}

// Pixels that can be seen, one after the other, by scrolling sideways.
int reachableWidth(const QListView& list)
{
    return list.horizontalScrollBar()->maximum() + list.viewport()->width();
}

TEST_P(DialogLayoutTest, WidestRowIsReadToItsEndWhereverItStands)
{
    RowsDialog many;
    for (int row = 0; row < 20000; ++row)
        many.rows.push_back(u"File:\\" + QString::number(row).toStdU16String() + std::u16string(60, u'i'));
    many.rows[12345] = u"File:\\5" + std::u16string(50, u'W');  // fewer letters than the others, and not the last
    std::thread program([&] { many.run(); });
    QWidget& dialog = await("Rows");
    const auto& list = *dialog.findChild<QListView*>();
    const int widest = widestRow(list);
    EXPECT_GT(widest, list.viewport()->width());
    EXPECT_TRUE(QTest::qWaitFor([&] { return reachableWidth(list) == widest; }, 60000)) << reachableWidth(list);
    EXPECT_TRUE(list.horizontalScrollBar()->isVisible());
    press(dialog, Qt::Key_Escape);
    awaitGone("Rows");
    program.join();
}

TEST_P(DialogLayoutTest, WidthThatTheProgramAsksForCountsOnlyWhereARowIsCut)
{
    for (const bool isCut : {false, true}) {
        RowsDialog wide{.rows = {u"Registry", std::u16string(isCut ? 60 : 1, u'W')}, .extent = 3000};
        std::thread program([&] { wide.run(); });
        QWidget& dialog = await("Rows");
        const auto& list = *dialog.findChild<QListView*>();
        EXPECT_EQ(list.horizontalScrollBar()->isVisible(), isCut);
        if (isCut) {
            EXPECT_GT(reachableWidth(list), widestRow(list));
        }
        press(dialog, Qt::Key_Escape);
        awaitGone("Rows");
        program.join();
    }
}

TEST_F(DialogFrameTest, ArrowsWithControlScrollAListAndMoveNoSelection)
{
    RowsDialog wide{.rows = {u"a", u"b", std::u16string(80, u'W')}};
    std::thread program([&] { wide.run(); });
    QWidget& dialog = await("Rows");
    ASSERT_TRUE(QTest::qWaitFor([&] { return dialog.isActiveWindow(); }, 60000));
    auto& list = *dialog.findChild<QListView*>();
    while (dialog.focusWidget() != &list)
        press(dialog, Qt::Key_Tab);
    press(dialog, Qt::Key_Home);
    const QScrollBar& bar = *list.horizontalScrollBar();
    press(dialog, Qt::Key_Right, Qt::ControlModifier);
    const int step = bar.value();
    EXPECT_GT(step, 0);
    EXPECT_LT(step, list.viewport()->width());
    EXPECT_EQ(list.currentIndex().row(), 0);
    press(dialog, Qt::Key_Right, Qt::ControlModifier);
    press(dialog, Qt::Key_Left, Qt::ControlModifier);
    EXPECT_EQ(bar.value(), step);
    // Alone they lead to other rows as they always did, and what is being read stays.
    press(dialog, Qt::Key_Right);
    EXPECT_EQ(list.currentIndex().row(), 1);
    EXPECT_EQ(bar.value(), step);
    press(dialog, Qt::Key_Escape);
    awaitGone("Rows");
    program.join();
}

TEST_F(DialogFrameTest, TipShowsTheWholeOfARowThatIsCut)
{
    RowsDialog cut{.rows = {u"Registry", u"File:\\<b>%1</b>  & more\\" + std::u16string(200, u'w')}};
    std::thread program([&] { cut.run(); });
    QWidget& dialog = await("Rows");
    auto& list = *dialog.findChild<QListView*>();
    const auto tipOf = [&](const std::u16string& row) {
        const QModelIndexList found =
            list.model()->match(list.model()->index(0, 0), Qt::DisplayRole, QString::fromStdU16String(row), 1,
                                Qt::MatchExactly | Qt::MatchCaseSensitive);
        const QPoint place(20, list.visualRect(found.front()).center().y());
        QHelpEvent asked(QEvent::ToolTip, place, list.viewport()->mapToGlobal(place));
        QApplication::sendEvent(list.viewport(), &asked);
        QTextDocument text;
        text.setHtml(QToolTip::text());
        return text.toPlainText().remove(QChar(0x200B)).toStdU16String();
    };
    EXPECT_EQ(tipOf(cut.rows[1]), cut.rows[1]);
    EXPECT_TRUE(QTest::qWaitFor([&] { return tipOf(cut.rows[0]).empty(); }, 60000));
    list.horizontalScrollBar()->setValue(20);
    EXPECT_EQ(tipOf(cut.rows[0]), cut.rows[0]);
    press(dialog, Qt::Key_Escape);
    awaitGone("Rows");
    program.join();
}

}  // namespace
