// window_trips_test.cpp - whole jobs through the real windows, by mouse and by keyboard.

#include "desktop.h"

#include "ce/dialog.h"
#include "ce/resource.h"
#include "ce/window.h"

#include <QCheckBox>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QtTest/QTest>

#include <fstream>
#include <future>

namespace {

using WindowTripTest = Desktop;

const QString FirstSet = "\\Storage Card\\QUILBOX\\QLBX0001.QLT";

// The file of the device that a trip takes away and wants back.
std::filesystem::path someFile(const std::filesystem::path& store)
{
    for (const auto& entry : std::filesystem::recursive_directory_iterator(store))
        if (entry.is_regular_file() && entry.file_size() > 0 && entry.path().extension() == ".txt")
            return entry.path();
    throw std::runtime_error("the demonstration device has no text");
}

TEST_F(WindowTripTest, BackupAndFullRestoreBringAFileBackByMouseAlone)
{
    const auto file = someFile(store());
    const std::string content = contentOf(file);
    backUpAllFiles("first");
    awaitRest();
    ASSERT_TRUE(std::filesystem::exists(sets() / "QLBX0001.QLT"));
    // The comment stands in the list as it was typed, key by key.
    const std::u16string typed = u"first";
    const std::string asBytes(reinterpret_cast<const char*>(typed.data()), typed.size() * 2);
    EXPECT_NE(contentOf(sets() / "QLBX0001.QLT").find(asBytes), std::string::npos);

    std::filesystem::remove(file);
    choose({"Operations", "Restore", "Full..."});
    QWidget& chooser = await("Select");
    clickRow(chooser, FirstSet);
    click(chooser, "OK");
    QWidget& restore = await("Full Restore");
    EXPECT_TRUE(restore.findChild<QPlainTextEdit*>()->isReadOnly());
    EXPECT_TRUE(restore.findChild<QPlainTextEdit*>()->toPlainText().endsWith("first"));
    EXPECT_FALSE(restore.findChild<QListView*>()->isVisible());
    click(restore, "OK");
    // The others are still there: each is asked for.
    const auto answerAll = [&] {
        if (auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            QTest::keyClick(question, Qt::Key_N);
        return std::filesystem::exists(file) && rests();
    };
    EXPECT_TRUE(QTest::qWaitFor(answerAll, 60000));
    EXPECT_EQ(contentOf(file), content);
}

TEST_F(WindowTripTest, KeyboardAloneReachesEveryStepOfABackup)
{
    QWidget& main = await("KORV Quillbox");
    // From the tree by Tab to the toolbar's button.
    for (int i = 0; i < 12 && nameOf(*main.focusWidget()) != "Full backup"; ++i)
        press(main, Qt::Key_Tab);
    ASSERT_EQ(nameOf(*main.focusWidget()), "Full backup");
    press(main, Qt::Key_Space);

    QWidget& dialog = await("Full Backup");
    // Enter is a line break here, Tab leaves.
    type(dialog, "two");
    press(dialog, Qt::Key_Return);
    type(dialog, "lines");
    EXPECT_EQ(dialog.findChild<QPlainTextEdit*>()->toPlainText(), "two\nlines");
    QStringList reached;
    for (int i = 0; i < 5; ++i) {
        press(dialog, Qt::Key_Tab);
        reached += nameOf(*dialog.focusWidget());
    }
    EXPECT_EQ(reached, QStringList({"All files", "All databases", "Registry", "OK", "Cancel"}));
    press(dialog, Qt::Key_Tab);
    EXPECT_EQ(nameOf(*dialog.focusWidget()), "Backupset comments");
    press(dialog, Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(nameOf(*dialog.focusWidget()), "Cancel");
    press(dialog, Qt::Key_Tab);
    press(dialog, Qt::Key_Tab);
    press(dialog, Qt::Key_Space);
    EXPECT_TRUE(static_cast<QCheckBox*>(findControl(dialog, "All files"))->isChecked());
    press(dialog, Qt::Key_Return);

    QWidget& chooser = await("Select");
    press(chooser, Qt::Key_Home);
    press(chooser, Qt::Key_Return);
    awaitRest();
    EXPECT_TRUE(std::filesystem::exists(sets() / "QLBX0001.QLT"));
}

TEST_F(WindowTripTest, OkWithoutAChoiceIsRefusedAndTheChooserStays)
{
    click(await("KORV Quillbox"), "Full backup");
    QWidget& dialog = await("Full Backup");
    click(dialog, "All files");
    click(dialog, "OK");
    QWidget& chooser = await("Select");
    click(chooser, "OK");
    auto& notice = static_cast<QMessageBox&>(await("Error"));
    EXPECT_EQ(notice.text(), "You must select an item");
    press(notice, Qt::Key_Return);
    awaitGone("Error");
    EXPECT_TRUE(isThere("Select"));
    press(chooser, Qt::Key_Escape);
    awaitRest();
    EXPECT_FALSE(std::filesystem::exists(sets() / "QLBX0001.QLT"));
}

TEST_F(WindowTripTest, OverrideQuestionHoldsNoByDefaultAndKeepsTheOldSet)
{
    backUpAllFiles("old");
    awaitRest();
    const std::string old = contentOf(sets() / "QLBX0001.QLT");
    backUpAllFiles("new");
    auto& question = static_cast<QMessageBox&>(await("Info?"));
    EXPECT_EQ(question.focusWidget(), question.button(QMessageBox::No));
    press(question, Qt::Key_Return);
    awaitRest();
    EXPECT_EQ(contentOf(sets() / "QLBX0001.QLT"), old);
    EXPECT_TRUE(std::filesystem::exists(sets() / "QLBX0002.QLT"));
}

TEST_F(WindowTripTest, PartialRestoreBringsBackTheSelectedRowsOnly)
{
    backUpAllFiles("all");
    awaitRest();
    const auto wanted = someFile(store());
    const std::string content = contentOf(wanted);
    for (const auto& entry : std::filesystem::directory_iterator(store()))
        std::filesystem::remove_all(entry);
    choose({"Operations", "Restore", "Partial..."});
    QWidget& chooser = await("Select");
    clickRow(chooser, FirstSet);
    press(chooser, Qt::Key_Return);
    QWidget& dialog = await("Restore selection");
    QString name = QString::fromStdString(std::filesystem::relative(wanted, store()).string());
    const QString row = "File:\\" + name.replace(u'/', u'\\');
    clickRow(dialog, row);
    // A second row, selected and let go again: each click turns its row over.
    auto* list = dialog.findChild<QListView*>();
    ASSERT_EQ(list->selectionModel()->selectedIndexes().size(), 1);
    press(dialog, Qt::Key_Home);
    const QString first = list->model()->index(0, 0).data().toString();
    if (first != row) {
        clickRow(dialog, first);
        EXPECT_EQ(list->selectionModel()->selectedIndexes().size(), 2);
        clickRow(dialog, first);
    }
    EXPECT_EQ(list->selectionModel()->selectedIndexes().size(), 1);
    click(dialog, "OK");
    awaitRest();
    EXPECT_EQ(contentOf(wanted), content);
    std::ptrdiff_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(store()))
        files += entry.is_regular_file() ? 1 : 0;
    EXPECT_EQ(files, 1);
}

TEST_F(WindowTripTest, NameWithALineBreakIsOneRowOfAList)
{
    std::ofstream(store() / "two\nlines.txt") << "content";
    backUpAllFiles("all");
    awaitRest();
    choose({"Operations", "Restore", "Partial..."});
    QWidget& chooser = await("Select");
    clickRow(chooser, FirstSet);
    press(chooser, Qt::Key_Return);
    QWidget& dialog = await("Restore selection");
    clickRow(dialog, QStringLiteral("File:\\two\u240Alines.txt"));
    EXPECT_EQ(dialog.findChild<QListView*>()->selectionModel()->selectedIndexes().size(), 1);
    press(dialog, Qt::Key_Escape);
    awaitRest();
}

TEST_F(WindowTripTest, CancelLeavesEveryDialogAndChangesNothing)
{
    const std::vector<std::pair<QStringList, QString>> dialogs{
        {{"File", "Filter..."}, "File filter"},
        {{"File", "Options..."}, "Options"},
        {{"File", "About..."}, "Quillbox"},
        {{"Operations", "Backup", "Full..."}, "Full Backup"},
    };
    for (const auto& [path, title] : dialogs) {
        SCOPED_TRACE(title.toStdString());
        choose(path);
        press(await(title), Qt::Key_Escape);
        awaitGone(title);
        choose(path);
        click(await(title), "Cancel");
        awaitGone(title);
        choose(path);
        await(title).close();
        awaitGone(title);
    }
    awaitRest();
}

TEST_F(WindowTripTest, OptionsFollowTheCoreAndArrowsMoveInTheGroup)
{
    choose({"File", "Options..."});
    QWidget& dialog = await("Options");
    auto& log = static_cast<QCheckBox&>(*findControl(dialog, "Generate log file"));
    // A screen reader toggles without a click: the program has to hear of it all the same.
    act(dialog, [&] { log.toggle(); });
    EXPECT_TRUE(log.isChecked());
    click(dialog, "Ask");
    EXPECT_EQ(nameOf(*dialog.focusWidget()), "Ask");
    press(dialog, Qt::Key_Up);
    EXPECT_EQ(nameOf(*dialog.focusWidget()), "Skip existing files");
    EXPECT_TRUE(static_cast<QAbstractButton*>(findControl(dialog, "Skip existing files"))->isChecked());
    EXPECT_FALSE(static_cast<QAbstractButton*>(findControl(dialog, "Ask"))->isChecked());
    click(dialog, "OK");
    awaitGone("Options");

    choose({"File", "Options..."});
    QWidget& again = await("Options");
    EXPECT_TRUE(static_cast<QAbstractButton*>(findControl(again, "Generate log file"))->isChecked());
    EXPECT_TRUE(static_cast<QAbstractButton*>(findControl(again, "Skip existing files"))->isChecked());
    press(again, Qt::Key_Escape);
    awaitGone("Options");
}

TEST_F(WindowTripTest, CloseDuringARunIsKeptAndTheSetIsWhole)
{
    QWidget& main = await("KORV Quillbox");
    backUpAllFiles("closing");
    // By now the run has begun. What is clicked meanwhile is dropped, the wish to close is kept.
    main.close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !isThere("KORV Quillbox"); }, 60000));
    EXPECT_FALSE(isThere("Full Backup"));
    EXPECT_TRUE(std::filesystem::exists(sets() / "QLBX0001.QLT"));
    EXPECT_GT(std::filesystem::file_size(sets() / "QLBX0001.QDT"), 0U);
}

TEST_F(WindowTripTest, PlaceIsRememberedThoughTheProgramEndsBeforeTheNextFrame)
{
    const QSize chosen(613, 417);
    await("KORV Quillbox").resize(chosen);
    endBetweenFrames();
    const QSettings settings(QSettings::IniFormat, QSettings::UserScope, "quillbox", "window");
    QWidget next;
    ASSERT_TRUE(next.restoreGeometry(settings.value("mainWindow/place").toByteArray()));
    EXPECT_EQ(next.size(), chosen);
}

// Its thread gets to its end later than the main window is gone.
TEST_F(WindowTripTest, ProgressWindowThatOutlivesTheMainWindowGoesWithIt)
{
    std::promise<void> shown;
    std::promise<void> mainGone;
    std::promise<void> changed;
    std::promise<void> end;
    const HWND owner = platform::window::topLevelWindows().front();
    std::thread late([&] {
        const HRSRC form = FindResourceW(nullptr, MAKEINTRESOURCEW(106), RT_DIALOG);
        const auto procedure = [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return 0; };
        const HWND progress = CreateDialogIndirectParamW(nullptr, LoadResource(nullptr, form), owner, procedure, 0);
        SetWindowTextW(progress, u"Late");
        ShowWindow(progress, SW_SHOW);
        shown.set_value();
        mainGone.get_future().wait();
        SetWindowTextW(progress, u"Later");
        changed.set_value();
        end.get_future().wait();
    });
    shown.get_future().wait();
    EXPECT_EQ(await("Late").parentWidget(), &await("KORV Quillbox"));
    await("KORV Quillbox").close();
    awaitGone("KORV Quillbox");
    EXPECT_FALSE(isThere("Late"));
    mainGone.set_value();
    changed.get_future().wait();
    QTest::qWait(100);  // frames in which it could come back
    EXPECT_FALSE(isThere("Later"));
    end.set_value();
    late.join();
}

TEST_F(WindowTripTest, NamesStandAsOnTheHostAndComeBackToTheByte)
{
    const std::vector<std::pair<std::string, QString>> names{
        {"What? \"a*b\" <1|2>", "What? \"a*b\" <1|2>"},
        {"back\\slash", QStringLiteral("back\u2216slash")},
        {"caf\xE9", QStringLiteral("caf\uFFFDE9")},
    };
    std::filesystem::create_directory(store() / "Odd");
    for (const auto& [name, shown] : names)
        std::ofstream(store() / "Odd" / name) << name;
    // What a user types goes to the program as it is.
    click(await("KORV Quillbox"), "Full backup");
    QWidget& backup = await("Full Backup");
    act(backup, [&] { backup.findChild<QPlainTextEdit*>()->insertPlainText(QChar(0xF73F)); });
    type(backup, "!");
    click(backup, "All files");
    click(backup, "OK");
    QWidget& storages = await("Select");
    clickRow(storages, "\\Storage Card");
    click(storages, "OK");
    awaitRest();
    const std::u16string typed = u"\xF73F!";
    const std::string asBytes(reinterpret_cast<const char*>(typed.data()), typed.size() * 2);
    EXPECT_NE(contentOf(sets() / "QLBX0001.QLT").find(asBytes), std::string::npos);

    choose({"Operations", "Restore", "Partial..."});
    QWidget& chooser = await("Select");
    clickRow(chooser, FirstSet);
    click(chooser, "OK");
    QWidget& dialog = await("Restore selection");
    for (const auto& [name, shown] : names) {
        clickRow(dialog, "File:\\Odd\\" + shown);
        std::filesystem::resize_file(store() / "Odd" / name, 0);
    }
    click(dialog, "OK");
    QStringList questions;
    for (std::size_t count = 0; count < names.size(); ++count) {
        QWidget& question = await("Warning");
        questions += question.findChild<QLabel*>("qt_msgbox_label")->accessibleName();
        press(question, Qt::Key_Y);
    }
    awaitRest();
    for (const auto& [name, shown] : names) {
        EXPECT_EQ(questions.filter("\\Odd\\" + shown + " exists").size(), 1) << shown.toStdString();
        EXPECT_EQ(contentOf(store() / "Odd" / name), name);
    }
    std::filesystem::remove_all(store() / "Odd");  // the toolkit can't remove such a name
}

}  // namespace
