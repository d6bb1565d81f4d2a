// tree_trips_test.cpp - marking in the real tree, by mouse, by keyboard and by screen reader.
#include "desktop.h"

#include <QAccessible>
#include <QApplication>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTreeView>
#include <QtTest/QTest>

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

    // Invalid if it isn't listed.
    QModelIndex item(const QStringList& path) const
    {
        QModelIndex at;
        for (const QString& text : path) {
            const QModelIndex above = at;
            at = {};
            for (int row = 0; row < tree_->model()->rowCount(above) && !at.isValid(); ++row) {
                const QModelIndex index = tree_->model()->index(row, 0, above);
                at = index.data().toString() == text ? index : QModelIndex();
            }
            if (!at.isValid())
                break;
        }
        return at;
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

TEST_F(TreeTripTest, ClicksMarkAndUnmarkAndARunCollapsesTheTree)
{
    clickButton(Files);
    awaitItem(Documents);
    clickButton(Documents);
    awaitItem(Welcome);
    clickLabel(ToDo);
    clickLabel(Welcome);
    awaitMark(Welcome, Qt::Checked);
    clickLabel(Welcome);
    awaitMark(Welcome, Qt::Unchecked);
    awaitMark(ToDo, Qt::Checked);
    awaitMark(Documents, Qt::PartiallyChecked);
    awaitMark(Files, Qt::PartiallyChecked);

    click(open({{"Operations", "Backup", "Selected items..."}, "Backup selected Item"}), "OK");
    chooseStorage();
    awaitRest();
    EXPECT_TRUE(listContains(u"To do.txt"));
    awaitUnlisted(Documents);
    EXPECT_FALSE(tree_->isExpanded(item(Files)));
}

TEST_F(TreeTripTest, OnlyLabelAndPictureMarkAndTheExpanderOnlyFolds)
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

TEST_F(TreeTripTest, KeysMoveMarkAndFoldAndTheViewFollowsTheCaret)
{
    QWidget& main = await(MainTitle);
    ASSERT_EQ(main.focusWidget(), tree_);
    press(main, Qt::Key_Home);
    press(main, Qt::Key_Down);
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
    EXPECT_EQ(mark(Registry), Qt::Checked);  // a caret that lands on it marks it
    type(main, "t");
    EXPECT_EQ(tree_->currentIndex(), item(ToDo));
    EXPECT_EQ(mark(ToDo), Qt::Checked);
    press(main, Qt::Key_Down);
    press(main, Qt::Key_Up);
    EXPECT_EQ(mark(ToDo), Qt::Unchecked);

    // With Ctrl the rows scroll and the caret stays.
    main.resize(main.width(), main.height() - tree_->height() + 3 * tree_->visualRect(item(ToDo)).height());
    QCoreApplication::processEvents();
    tree_->verticalScrollBar()->setValue(0);
    press(main, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_GT(tree_->verticalScrollBar()->value(), 0);
    EXPECT_EQ(tree_->currentIndex(), item(ToDo));
    press(main, Qt::Key_Home);
    press(main, Qt::Key_Down);
    press(main, Qt::Key_Left);
    awaitUnlisted(Documents);
    EXPECT_EQ(tree_->currentIndex(), item(Files));
}

TEST_F(TreeTripTest, ScreenReaderReadsMarksAndItsInputGoesToTheProgram)
{
    QAccessible::setActive(true);
    QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(tree_);
    const auto find = [&](const QString& name) -> QAccessibleInterface* {
        for (int i = 0; i < reader->childCount(); ++i) {
            if (reader->child(i) && reader->child(i)->text(QAccessible::Name) == name)
                return reader->child(i);
        }
        return nullptr;
    };
    const auto expectMark = [&](const QString& name, const QString& words, bool isChecked) {
        const QAccessibleInterface* item = find(name);
        ASSERT_TRUE(item);
        EXPECT_EQ(item->text(QAccessible::Description), words);
        EXPECT_TRUE(item->state().checkable);
        EXPECT_EQ(static_cast<bool>(item->state().checked), isChecked);
    };
    expectMark("Registry", "not marked", false);
    expectMark("Files", "nothing marked", false);

    // A selection by the reader is a click for the program, which marks the item.
    act(*tree_->window(),
        [&] { tree_->selectionModel()->setCurrentIndex(item(Registry), QItemSelectionModel::ClearAndSelect); });
    awaitMark(Registry, Qt::Checked);
    EXPECT_EQ(tree_->currentIndex(), item(Registry));
    expectMark("Registry", "marked", true);
    // So is a toggle.
    act(*tree_->window(),
        [&] { EXPECT_FALSE(tree_->model()->setData(item(Registry), Qt::Unchecked, Qt::CheckStateRole)); });
    awaitMark(Registry, Qt::Unchecked);
    QAccessible::setActive(false);
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

}  // namespace
