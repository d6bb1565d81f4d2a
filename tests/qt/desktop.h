// desktop.h - the real program in its real windows, without a screen, operated as a user would.
#pragma once

#include "device/device.h"
#include "host_folder.h"
#include "screen.h"
#include "start/restore_request.h"

#include "ce/types.h"

#include <QListView>
#include <QWidget>
#include <QtTest/QTest>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

inline const QString MainTitle = "KORV Quillbox";

// Every dialog that a menu item opens, as the menu item's path and the dialog's title.
struct DialogOfMenu {
    QStringList path;
    QString title;
};
const std::vector<DialogOfMenu>& dialogsOfMenu();

// A fresh device with the content of a first start, and the program running on it.
class Desktop : public HostFolder {
protected:
    void SetUp() override;
    // Closes all open windows, the main window last.
    void TearDown() override;

    // Handles events until the condition holds. Returns false after a minute. No successful test waits that long.
    static bool eventually(const std::function<bool()>& holds) { return QTest::qWaitFor(holds, 60000); }
    // Waits for the window and returns it. Throws if the window doesn't appear.
    static QWidget& await(const QString& title);
    static bool isThere(const QString& title);
    static void awaitGone(const QString& title)
    {
        EXPECT_TRUE(eventually([&] { return !isThere(title); })) << title.toStdString();
    }
    // Returns whether the program waits for input and no window is over the main window.
    static bool rests();
    void awaitRest()
    {
        EXPECT_TRUE(eventually(rests));
        drawFrame();
    }

    // Waits until the window is in front and takes input, because the program drops input before that. Then calls
    // `input`, and waits until the program takes input again or another window is in front.
    void act(QWidget& window, const std::function<void()>& input);
    void click(QWidget& window, const QString& name);
    void clickRow(QWidget& window, const QString& text);
    void type(QWidget& window, const QString& text)
    {
        for (const QChar letter : text)
            act(window, [&] { QTest::keyClicks(window.focusWidget(), QString(letter)); });
    }
    void press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        act(window, [&] { QTest::keyClick(window.focusWidget() ? window.focusWidget() : &window, key, modifiers); });
    }
    void press(QWidget& window, std::initializer_list<Qt::Key> keys)
    {
        for (const Qt::Key key : keys)
            press(window, key);
    }
    // Presses Tab until the control has the focus.
    void tabTo(QWidget& window, const std::function<bool(QWidget&)>& isMeant)
    {
        for (int times = 0; times < 30 && !isMeant(*window.focusWidget()); ++times)
            press(window, Qt::Key_Tab);
        ASSERT_TRUE(isMeant(*window.focusWidget()));
    }

    QWidget& open(const DialogOfMenu& dialog);
    // Opens the restore dialog for the first set on the card.
    QWidget& openRestore(const QString& item, const QString& title)
    {
        QWidget& chooser = open({{"Operations", "Restore", item}, "Select"});
        clickRow(chooser, "\\Storage Card\\QUILBOX\\QLBX0001.QLT");
        click(chooser, "OK");
        return await(title);
    }
    // Closes the dialog with Escape.
    void leave(QWidget& dialog)
    {
        const QString title = dialog.windowTitle();
        press(dialog, Qt::Key_Escape);
        awaitGone(title);
    }
    void chooseStorage(const QString& row = "\\Storage Card")
    {
        QWidget& chooser = await("Select");
        clickRow(chooser, row);
        click(chooser, "OK");
    }

    // The windows of these two functions run on threads of their own. A thread ends when its window is closed.
    QWidget& ask(const QString& text, const QString& title, UINT type, std::atomic<int>* answer = nullptr);
    // A list box with these rows, which asks for the width `extent`, in a dialog called "Rows".
    QListView& showRows(const std::vector<std::u16string>& rows, int extent = 0);

    // Asks the main window to show the dialog that selects what to restore from the set.
    platform::device::ShownSet openSet(const std::filesystem::path& listFile)
    {
        auto set = device_->showSet(listFile);
        if (set.error.empty())
            request_.make(set.listFile);
        return set;
    }
    // Backs up all files to the storage card: starts the run from the toolbar and waits for its end.
    void backUpAllFiles(const QString& comment);
    std::filesystem::path store() const { return at("device/object-store"); }
    std::filesystem::path sets() const { return at("device/cards/Storage Card/QUILBOX"); }
    // Returns whether the text is a name or comment in the list of the first set.
    bool listContains(const std::u16string& text) const;

    // Shows the latest changes now, as the next frame would.
    void drawFrame() { screen_->flush(); }
    // Ends the program before the next frame, as a delayed request to close does.
    void endBetweenFrames();

private:
    void start(const std::function<void()>& program);

    std::unique_ptr<platform::device::Device> device_;
    platform::display::RestoreRequest request_;
    std::optional<platform::qt::Screen> screen_;
    std::vector<std::thread> programs_;  // the main program, then others
    std::atomic<int> running_ = 0;
};

// The name that a screen reader reads.
QString nameOf(const QWidget& widget);
// Returns null if the window shows no such control.
QWidget* findControl(QWidget& window, const QString& name);
// Returns a row of the model by its text, or an invalid index.
QModelIndex findRow(const QAbstractItemModel& model, const QString& text, const QModelIndex& above = {});
// The tip that the view shows at a point of its viewport.
QString tipAt(const QAbstractItemView& view, const QPoint& point);
