// tree_trips_test.cpp - marking in the real tree, by mouse, by keyboard and by screen reader.
#include "desktop.h"

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTreeView>

namespace {

const QStringList Registry{"Registry"};
const QStringList Files{"Files"};
const QStringList Documents{"Files", "My Documents"};
const QStringList ToDo{"Files", "My Documents", "To do.txt"};
const QStringList Welcome{"Files", "My Documents", "Welcome.txt"};
constexpr int OnPicture = 5;  // pixels

class TreeTripTest : public Desktop {
protected:
    void SetUp() override
    {
        Desktop::SetUp();
        tree_ = await(MainTitle).findChild<QTreeView*>();
        awaitItem(Registry);
    }

    // Returns the item of the path, or an invalid index if the item isn't listed.
    QModelIndex item(const QStringList& path) const
    {
        QModelIndex found;
        for (const QString& text : path) {
            found = findRow(*tree_->model(), text, found);
            if (!found.isValid())
                break;
        }
        return found;
    }
    void awaitItem(const QStringList& path)
    {
        EXPECT_TRUE(eventually([&] { return item(path).isValid(); })) << path.join(u'\\').toStdString();
    }
    void awaitUnlisted(const QStringList& path)
    {
        EXPECT_TRUE(eventually([&] { return !item(path).isValid(); })) << path.join(u'\\').toStdString();
    }
    Qt::CheckState mark(const QStringList& path) const
    {
        return static_cast<Qt::CheckState>(item(path).data(Qt::CheckStateRole).toInt());
    }
    void awaitMark(const QStringList& path, Qt::CheckState state)
    {
        EXPECT_TRUE(eventually([&] { return mark(path) == state; })) << path.join(u'\\').toStdString();
    }

    // `x`: pixels to the right of the left edge of the item's picture.
    QPoint pointOn(const QStringList& path, int x) const
    {
        tree_->scrollTo(item(path));
        const QRect row = tree_->visualRect(item(path));
        return {row.left() + x, row.center().y()};
    }
    void clickOn(const QStringList& path, int x, Qt::MouseButton button = Qt::LeftButton)
    {
        act(*tree_->window(), [&] { QTest::mouseClick(tree_->viewport(), button, {}, pointOn(path, x)); });
    }
    void clickLabel(const QStringList& path) { clickOn(path, tree_->iconSize().width() + 10); }
    void clickButton(const QStringList& path) { clickOn(path, -tree_->indentation() / 2); }

    QTreeView* tree_ = nullptr;
};

TEST_F(TreeTripTest, ClickBesideAnItemMarksNothingAClickOnItsPictureDoesAndTheExpanderOnlyFolds)
{
    clickOn(Registry, tree_->viewport()->width() - tree_->visualRect(item(Registry)).left() - 2);
    clickOn(Registry, OnPicture, Qt::RightButton);
    EXPECT_EQ(mark(Registry), Qt::Unchecked);
    clickOn(Registry, OnPicture);
    awaitMark(Registry, Qt::Checked);
    EXPECT_TRUE(tree_->selectionModel()->isSelected(item(Registry)));

    clickButton(Files);
    awaitItem(Documents);
    EXPECT_TRUE(tree_->isExpanded(item(Files)));
    EXPECT_TRUE(tree_->selectionModel()->isSelected(item(Registry)));
    EXPECT_TRUE(tree_->model()->hasChildren(item(Documents)));
    clickButton(Files);
    awaitUnlisted(Documents);
    EXPECT_FALSE(tree_->isExpanded(item(Files)));
    EXPECT_TRUE(tree_->model()->hasChildren(item(Files)));

    clickOn(Files, OnPicture);
    act(*tree_->window(), [&] {
        const QPoint point = pointOn(Files, OnPicture);
        QMouseEvent second(QEvent::MouseButtonDblClick, point, tree_->viewport()->mapToGlobal(point), Qt::LeftButton,
                           Qt::LeftButton, {});
        QApplication::sendEvent(tree_->viewport(), &second);
    });
    awaitItem(Documents);
    EXPECT_TRUE(tree_->isExpanded(item(Files)));
}

// A click on the text only selects the item.
TEST_F(TreeTripTest, ClickOnTheBoxOfAFolderAndKeysMarkWhatIsInIt)
{
    clickButton(Files);
    awaitItem(Documents);
    clickLabel(Documents);
    EXPECT_EQ(mark(Documents), Qt::Unchecked);
    for (const bool selected : {true, false}) {
        if (!selected)
            clickLabel(Files);
        clickOn(Documents, OnPicture);
        awaitMark(Documents, Qt::PartiallyChecked);
        clickOn(Documents, OnPicture);
        awaitMark(Documents, Qt::Unchecked);
    }
    clickOn(Documents, tree_->iconSize().width() / 2 + OnPicture);
    EXPECT_EQ(mark(Documents), Qt::Unchecked);

    QWidget& main = await(MainTitle);
    press(main, Qt::Key_M, Qt::ControlModifier);
    awaitMark(Documents, Qt::PartiallyChecked);
    press(main, Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
    awaitMark(Documents, Qt::Unchecked);
    press(main, Qt::Key_End);
    ASSERT_EQ(mark(Registry), Qt::Checked);
    press(main, Qt::Key_M, Qt::ControlModifier);
    EXPECT_EQ(mark(Registry), Qt::Checked) << "Mark never unmarks";
}

TEST_F(TreeTripTest, ContextMenuMarksUnmarksAndExpandsWithoutSelectingAFile)
{
    // Chooses an item of a row's context menu. Returns false if the item is disabled.
    const auto choose = [&](const QStringList& path, const QString& text) {
        const QPoint point = pointOn(path, OnPicture);
        QContextMenuEvent event(QContextMenuEvent::Mouse, point, tree_->viewport()->mapToGlobal(point));
        QApplication::sendEvent(tree_->viewport(), &event);
        QWidget* menu = QApplication::activePopupWidget();
        bool enabled = false;
        act(*tree_->window(), [&] {
            for (QAction* action : menu ? menu->actions() : QList<QAction*>()) {
                if (action->text().remove(u'&') == text && (enabled = action->isEnabled()))
                    action->trigger();
            }
            menu->close();
        });
        return enabled;
    };
    EXPECT_FALSE(choose(Files, "Mark"));
    EXPECT_TRUE(choose(Files, "Expand all below"));
    awaitItem(Welcome);
    EXPECT_TRUE(choose(Welcome, "Mark"));
    awaitMark(Welcome, Qt::Checked);
    EXPECT_FALSE(choose(Welcome, "Mark"));
    EXPECT_FALSE(choose(ToDo, "Unmark"));
    EXPECT_EQ(mark(ToDo), Qt::Unchecked);
    EXPECT_TRUE(choose(Documents, "Mark"));
    awaitMark(ToDo, Qt::Checked);
    EXPECT_TRUE(choose(Documents, "Unmark"));
    awaitMark(Welcome, Qt::Unchecked);
}

TEST_F(TreeTripTest, ClickTogglesAMarkAndF5ListsAgainAndABackupCollapsesTheTree)
{
    clickButton(Files);
    awaitItem(Documents);
    clickButton(Documents);
    for (const Qt::CheckState state : {Qt::Checked, Qt::Unchecked}) {
        clickLabel(Welcome);
        awaitMark(Welcome, state);
    }
    clickLabel(ToDo);
    awaitMark(ToDo, Qt::Checked);
    awaitMark(Documents, Qt::PartiallyChecked);
    awaitMark(Files, Qt::PartiallyChecked);
    hostWrite(store() / "My Documents/New.txt", "new");
    std::filesystem::remove(store() / "My Documents" / "Welcome.txt");
    press(await(MainTitle), Qt::Key_F5);
    awaitItem({"Files", "My Documents", "New.txt"});
    awaitUnlisted(Welcome);
    EXPECT_EQ(mark(ToDo), Qt::Checked);
    EXPECT_EQ(tree_->currentIndex(), item(Documents)) << "a file would be marked by the selection";

    click(open({{"Operations", "Backup", "Selected items..."}, "Backup selected Item"}), "OK");
    chooseStorage();
    awaitRest();
    EXPECT_TRUE(listContains(u"To do.txt"));
    awaitUnlisted(Documents);
    EXPECT_FALSE(tree_->isExpanded(item(Files)));
}

TEST_F(TreeTripTest, KeysMoveTheCaretMarkItemsAndFoldFoldersAndTheViewFollowsTheCaret)
{
    QWidget& main = await(MainTitle);
    ASSERT_EQ(main.focusWidget(), tree_);
    press(main, {Qt::Key_Home, Qt::Key_Down});
    EXPECT_EQ(tree_->currentIndex(), item(Files));
    press(main, Qt::Key_Right);
    awaitItem(Documents);
    for (int row = 0; row <= item(Documents).row(); ++row)
        press(main, row == 0 ? Qt::Key_Right : Qt::Key_Down);
    ASSERT_EQ(tree_->currentIndex(), item(Documents));
    press(main, Qt::Key_Plus, Qt::KeypadModifier);
    awaitItem(Welcome);
    press(main, Qt::Key_End);
    EXPECT_EQ(tree_->currentIndex(), item(Registry));
    EXPECT_TRUE(tree_->viewport()->rect().contains(tree_->visualRect(item(Registry))));
    EXPECT_EQ(mark(Registry), Qt::Checked);  // the arrival of the caret marks the item
    type(main, "t");
    EXPECT_EQ(tree_->currentIndex(), item(ToDo));
    EXPECT_EQ(mark(ToDo), Qt::Checked);
    press(main, {Qt::Key_Down, Qt::Key_Up});
    EXPECT_EQ(mark(ToDo), Qt::Unchecked);

    // With Ctrl the rows scroll and the caret stays.
    main.resize(main.width(), main.height() - tree_->height() + 3 * tree_->visualRect(item(ToDo)).height());
    QCoreApplication::processEvents();
    tree_->verticalScrollBar()->setValue(0);
    press(main, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_GT(tree_->verticalScrollBar()->value(), 0);
    EXPECT_EQ(tree_->currentIndex(), item(ToDo));
    press(main, {Qt::Key_Home, Qt::Key_Down, Qt::Key_Left});
    awaitUnlisted(Documents);
    EXPECT_EQ(tree_->currentIndex(), item(Files));
}

// screen_reader_test.py tests what a screen reader reads of the marks, if the host has the necessary tools.
TEST_F(TreeTripTest, InputOfAScreenReaderGoesToTheProgram)
{
    // A selection by the screen reader reaches the program as a click, which marks the item.
    act(*tree_->window(),
        [&] { tree_->selectionModel()->setCurrentIndex(item(Registry), QItemSelectionModel::ClearAndSelect); });
    awaitMark(Registry, Qt::Checked);
    EXPECT_EQ(tree_->currentIndex(), item(Registry));
    // A toggle by the screen reader reaches it as a click, too.
    act(*tree_->window(),
        [&] { EXPECT_FALSE(tree_->model()->setData(item(Registry), Qt::Unchecked, Qt::CheckStateRole)); });
    awaitMark(Registry, Qt::Unchecked);
}

TEST_F(TreeTripTest, FocusComesBackFromTheMenuThatF10Opened)
{
    QWidget& main = await(MainTitle);
    tree_->setFocus();
    for (int times = 0; times < 2; ++times) {
        press(main, Qt::Key_F10);
        ASSERT_TRUE(QApplication::activePopupWidget());
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
        EXPECT_FALSE(QApplication::activePopupWidget());
        press(main, Qt::Key_Escape);
        EXPECT_EQ(main.focusWidget(), tree_);
    }
}

TEST_F(TreeTripTest, TipsShowACutNameWholeAndExplainARomFileAndTheMarkButton)
{
    const std::string longName = "long " + std::string(200, 'w');
    hostWrite(store() / "Windows" / longName, "w");
    const QStringList rom{"Files", "Windows", "calc.rom"};
    const QStringList cut{"Files", "Windows", QString::fromStdString(longName)};
    clickButton(Files);
    clickButton({"Files", "Windows"});
    awaitItem(cut);
    const auto tipOf = [&](const QStringList& path) { return tipAt(*tree_, pointOn(path, OnPicture)); };
    EXPECT_TRUE(tipOf(rom).startsWith("This file is in ROM."));
    EXPECT_EQ(tipOf(cut), cut.back());
    EXPECT_TRUE(eventually([&] { return tipOf({"Files", "Windows"}).isEmpty(); }));
    const QWidget* button = findControl(await(MainTitle), "Mark");
    ASSERT_TRUE(button);
    EXPECT_TRUE(button->toolTip().contains("Marks all files in the selected folder"))
        << button->toolTip().toStdString();
    QWidget& options = open(dialogsOfMenu()[1]);
    EXPECT_TRUE(findControl(options, "Verify backuped file")->toolTip().contains("no effect"));
    leave(options);
}

}  // namespace
