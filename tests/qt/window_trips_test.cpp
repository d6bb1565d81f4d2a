// window_trips_test.cpp - whole jobs through the real windows, by mouse and by keyboard.
#include "desktop.h"
#include "kernel/troubles.h"

#include "ce/dialog.h"
#include "ce/resource.h"
#include "ce/window.h"

#include <QApplication>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QSettings>
#include <QToolButton>

#include <barrier>

namespace {

using WindowTripTest = Desktop;

bool isChecked(QWidget& dialog, const QString& name)
{
    return static_cast<QAbstractButton*>(findControl(dialog, name))->isChecked();
}

TEST_F(WindowTripTest, MessageBoxTakesEnterLettersAndEscapeButNoRepeatedKeyAndShowsItsDefault)
{
    struct {
        UINT type;
        QMessageBox::StandardButton standard;
        Qt::Key key;
        int answer;
    } const cases[] = {
        {MB_YESNO, QMessageBox::Yes, Qt::Key_N, IDNO},
        {MB_YESNO, QMessageBox::Yes, Qt::Key_Escape, 0},
        {MB_YESNO | MB_DEFBUTTON2, QMessageBox::No, Qt::Key_Return, IDNO},
        {MB_OK, QMessageBox::Ok, Qt::Key_Escape, IDOK},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << each.type << ' ' << each.key);
        std::atomic<int> answer = 0;
        auto& box = static_cast<QMessageBox&>(ask("Replace ?", "Info?", each.type, &answer));
        EXPECT_EQ(box.focusWidget(), box.button(each.standard));
        // Repeats of a key that was pressed before the box appeared have no effect.
        for (const Qt::Key held : {Qt::Key_Y, Qt::Key_Return, Qt::Key_Escape}) {
            QKeyEvent repeat(QEvent::KeyPress, held, {}, held == Qt::Key_Y ? "y" : "", true);
            QApplication::sendEvent(box.focusWidget(), &repeat);
        }
        press(box, each.key);
        if (each.answer == 0) {
            box.close();
            EXPECT_TRUE(isThere("Info?"));
            press(box, Qt::Key_N);
            awaitGone("Info?");
            continue;
        }
        awaitGone("Info?");
        EXPECT_TRUE(eventually([&] { return answer == each.answer; })) << answer;
    }
}

TEST_F(WindowTripTest, KeysOpenWhatTheMenuAndTheTipsSayTheyOpen)
{
    QWidget& main = await(MainTitle);
    const std::tuple<Qt::Key, Qt::KeyboardModifiers, QString> cases[] = {
        {Qt::Key_B, Qt::ControlModifier, "Full Backup"},
        {Qt::Key_B, Qt::ControlModifier | Qt::ShiftModifier, "Backup selected Item"},
        {Qt::Key_R, Qt::ControlModifier, "Select"},
        {Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier, "Select"}};
    backUpAllFiles("");
    press(main, Qt::Key_End);  // marks the registry
    for (const auto& [key, modifiers, title] : cases) {
        press(main, key, modifiers);
        leave(await(title));
    }
    QStringList tips;
    for (const QToolButton* button : main.findChildren<QToolButton*>())
        tips += button->toolTip();
    EXPECT_EQ(tips.filter("(Ctrl+").size(), 3) << tips.join("; ").toStdString();
}

TEST_F(WindowTripTest, RestoreThatAsksIsAnsweredOnceOrStoppedByClosingTheWindow)
{
    const auto file = store() / "My Documents" / "To do.txt";
    backUpAllFiles("");
    const std::string before = hostRead(file);
    const auto restoreAll = [&]() -> QMessageBox& {
        hostWrite(file, "changed");
        click(openRestore("Full...", "Full Restore"), "OK");
        return static_cast<QMessageBox&>(await("Warning"));
    };
    QMessageBox& once = restoreAll();
    act(once, [&] { once.checkBox()->click(); });
    press(once, Qt::Key_Y);
    awaitRest();
    EXPECT_EQ(hostRead(file), before);

    QMessageBox& question = restoreAll();
    EXPECT_FALSE(question.isModal()) << "the window manager's request to close would be dropped";
    await(MainTitle).close();
    EXPECT_EQ(nameOf(*question.focusWidget()), "Stop the run and close");
    press(question, Qt::Key_Return);
    awaitGone(MainTitle);
    EXPECT_EQ(hostRead(file), "changed");
    using namespace platform::kernel;
    EXPECT_FALSE(troublesOf(Trouble::Reaching, Troubled::File, Since::Job).empty());
}

TEST_F(WindowTripTest, EachWayToCancelADialogClosesIt)
{
    for (const DialogOfMenu& dialog : dialogsOfMenu()) {
        SCOPED_TRACE(dialog.title.toStdString());
        leave(open(dialog));
        click(open(dialog), "Cancel");
        awaitGone(dialog.title);
        open(dialog).close();
        awaitGone(dialog.title);
    }
    awaitRest();
}

TEST_F(WindowTripTest, ButtonsShowTheCoresStatesAndArrowsMoveInTheGroup)
{
    QWidget& dialog = open({{"File", "Options..."}, "Options"});
    // A screen reader toggles a check box without a click. The program must receive the toggle as a click.
    act(dialog, [&] { static_cast<QCheckBox*>(findControl(dialog, "Generate log file"))->toggle(); });
    EXPECT_TRUE(isChecked(dialog, "Generate log file"));
    click(dialog, "Ask");
    press(dialog, Qt::Key_Up);
    EXPECT_EQ(nameOf(*dialog.focusWidget()), "Skip existing files");
    EXPECT_TRUE(isChecked(dialog, "Skip existing files"));
    EXPECT_FALSE(isChecked(dialog, "Ask"));
    leave(dialog);
}

TEST_F(WindowTripTest, SizeIsRememberedThoughTheProgramEndsBeforeTheNextFrame)
{
    const QSize chosen(613, 417);
    await(MainTitle).resize(chosen);
    endBetweenFrames();
    const QSettings settings(QSettings::IniFormat, QSettings::UserScope, "quillbox", "window");
    QWidget next;
    ASSERT_TRUE(next.restoreGeometry(settings.value("mainWindow/place").toByteArray()));
    EXPECT_EQ(next.size(), chosen);
}

// The thread of a progress window can end after the main window has gone.
TEST_F(WindowTripTest, ProgressWindowClosesWithTheMainWindowAndDoesNotComeBack)
{
    std::barrier steps(2);
    const HWND owner = platform::window::topLevelWindows().front();
    std::thread late([&] {
        const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(106), RT_DIALOG);
        const auto procedure = [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return 0; };
        const HWND progress = CreateDialogIndirectParamW(nullptr, LoadResource(nullptr, resource), owner, procedure, 0);
        SetWindowTextW(progress, u"Late");
        ShowWindow(progress, SW_SHOW);
        steps.arrive_and_wait();  // shown
        steps.arrive_and_wait();  // the main window has gone
        SetWindowTextW(progress, u"Later");
        steps.arrive_and_wait();  // changed
        steps.arrive_and_wait();  // the end
    });
    steps.arrive_and_wait();  // shown
    EXPECT_EQ(await("Late").parentWidget(), &await(MainTitle));
    await(MainTitle).close();
    awaitGone(MainTitle);
    EXPECT_FALSE(isThere("Late"));
    steps.arrive_and_wait();  // the main window has gone
    steps.arrive_and_wait();  // changed
    drawFrame();
    EXPECT_FALSE(isThere("Later"));
    steps.arrive_and_wait();  // the end
    late.join();
}

TEST_F(WindowTripTest, NamesAreShownAsOnTheHostAndTypedTextIsNotMapped)
{
    const std::vector<std::pair<std::string, QString>> names{
        {"What? \"a*b\" <1|2>", "What? \"a*b\" <1|2>"},
        {"back\\slash", QStringLiteral("back\u2216slash")},
        {"caf\xE9", QStringLiteral("caf\uFFFDE9")},
        {"two\nlines", QStringLiteral("two\u240Alines")},
    };
    for (const auto& [name, shown] : names)
        hostWrite(store() / "Odd" / name, name);
    click(await(MainTitle), "Full backup");
    QWidget& backup = await("Full Backup");
    act(backup, [&] { backup.findChild<QPlainTextEdit*>()->insertPlainText(QChar(0xF73F)); });
    press(backup, Qt::Key_Return);  // inserts a line break in this edit
    type(backup, "!");
    click(backup, "All files");
    click(backup, "OK");
    chooseStorage();
    awaitRest();
    EXPECT_TRUE(listContains(u"\xF73F\r\n!"));

    QWidget& full = openRestore("Full...", "Full Restore");
    EXPECT_TRUE(full.findChild<QPlainTextEdit*>()->isReadOnly());
    EXPECT_TRUE(full.findChild<QPlainTextEdit*>()->toPlainText().endsWith(u'!'));
    EXPECT_FALSE(full.findChild<QListView*>()->isVisible());
    leave(full);

    QWidget& dialog = openRestore("Partial...", "Restore selection");
    const auto* selection = dialog.findChild<QListView*>()->selectionModel();
    // Each click on a row selects or unselects that row alone.
    for (const auto& [name, shown] : names)
        clickRow(dialog, "File:\\Odd\\" + shown);
    clickRow(dialog, "File:\\My Documents\\To do.txt");
    EXPECT_EQ(selection->selectedIndexes().size(), std::ssize(names) + 1);
    EXPECT_TRUE(dialog.findChild<QListView*>()->accessibleDescription().startsWith("5 of "));
    clickRow(dialog, "File:\\My Documents\\To do.txt");
    click(dialog, "OK");
    QStringList questions;
    for (std::size_t count = 0; count < names.size(); ++count) {
        QWidget& question = await("Warning");
        questions += question.findChild<QLabel*>("qt_msgbox_label")->accessibleName();
        press(question, Qt::Key_Y);
    }
    awaitRest();
    for (const auto& [name, shown] : names) {
        const QString inQuestion = QString(shown).replace(QChar(0x240A), u'\n');
        EXPECT_EQ(questions.filter("\\Odd\\" + inQuestion + " exists").size(), 1) << shown.toStdString();
    }
}

}  // namespace
