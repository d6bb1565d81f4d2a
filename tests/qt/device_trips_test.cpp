// device_trips_test.cpp - cards, folders and sets of the host that the user opens in the window of a running program.
#include "desktop.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTreeView>

namespace {

class DeviceTripTest : public Desktop {
protected:
    // Opens the desktop's file dialog with an item of the menu "Device", and chooses the folder.
    void choose(const QString& item, const QString& title, const QString& folder)
    {
        auto& dialog = dynamic_cast<QFileDialog&>(open({{"Device", item}, title}));
        dialog.selectFile(folder);
        QMetaObject::invokeMethod(&dialog, "accept");
    }
    bool isListed(const QString& text) const
    {
        const auto* model = await(MainTitle).findChild<QTreeView*>()->model();
        return !model->match(model->index(0, 0), Qt::DisplayRole, text, 1, Qt::MatchExactly | Qt::MatchRecursive)
                    .isEmpty();
    }
};

TEST_F(DeviceTripTest, AddedCardIsListedAtOnceAndTakesABackup)
{
    std::filesystem::create_directory(at("Stick"));
    const auto stick = QString::fromStdString(at("Stick"));
    QWidget& main = await(MainTitle);
    press(main, {Qt::Key_Home, Qt::Key_Down, Qt::Key_Right});
    ASSERT_TRUE(eventually([&] { return isListed("My Documents"); }));
    choose("Add card...", "Add card", stick);
    EXPECT_TRUE(eventually([&] { return isListed("Stick"); }));

    choose("Add folder...", "Add folder", stick);
    auto& refusal = dynamic_cast<QMessageBox&>(await("Add folder"));
    EXPECT_TRUE(refusal.text().contains("is on the device already")) << refusal.text().toStdString();
    refusal.close();

    click(main, "Full backup");
    QWidget& dialog = await("Full Backup");
    click(dialog, "Registry");
    click(dialog, "OK");
    chooseStorage("\\Stick");
    awaitRest();
    EXPECT_TRUE(QFile::exists(stick + "/QUILBOX/QLBX0001.QLT"));
}

TEST_F(DeviceTripTest, SetOfAnotherFolderOpensTheRestoreSelection)
{
    backUpAllFiles("of the host");
    const auto elsewhere = at("Old/QUILBOX");
    std::filesystem::create_directories(elsewhere);
    std::filesystem::copy(sets(), elsewhere);
    for (const auto& [listFile, path] :
         {std::pair(elsewhere / "QLBX0001.QLT", u"\\Old\\QUILBOX\\QLBX0001.QLT"),
          std::pair(sets() / "QLBX0001.QLT", u"\\Storage Card\\QUILBOX\\QLBX0001.QLT")}) {
        EXPECT_EQ(openSet(listFile).listFile, path);
        QWidget& selection = await("Restore selection");
        EXPECT_TRUE(selection.findChild<QPlainTextEdit*>()->toPlainText().endsWith("of the host"));
        leave(selection);
        awaitRest();
    }
    EXPECT_NE(openSet(elsewhere / "QLBX0001.QDT").error, "");

    // While another dialog is open, the dialog for the set waits.
    QWidget& about = open({{"File", "About..."}, "Quillbox"});
    EXPECT_EQ(openSet(elsewhere / "QLBX0001.QLT").error, "");
    drawFrame();
    EXPECT_FALSE(isThere("Restore selection"));
    leave(about);
    leave(await("Restore selection"));
}

}  // namespace
