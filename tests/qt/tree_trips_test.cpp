// tree_trips_test.cpp - marking in the real tree, by mouse, by keyboard and by screen reader.

#include "desktop.h"

#include <QAccessible>
#include <QApplication>
#include <QListView>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTreeView>
#include <QtTest/QTest>

namespace {

class TreeTripTest : public Desktop {
protected:
    void SetUp() override
    {
        Desktop::SetUp();
        tree_ = await("KORV Quillbox").findChild<QTreeView*>();
        ASSERT_TRUE(tree_);
        awaitItem({"Registry"});
    }

    // Invalid if it isn't listed.
    [[nodiscard]] QModelIndex item(const QStringList& path) const
    {
        QModelIndex at;
        for (const QString& text : path) {
            const QModelIndex above = at;
            at = {};
            for (int row = 0; row < tree_->model()->rowCount(above); ++row)
                if (tree_->model()->index(row, 0, above).data().toString() == text)
                    at = tree_->model()->index(row, 0, above);
            if (!at.isValid())
                break;
        }
        return at;
    }
    QModelIndex awaitItem(const QStringList& path)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return item(path).isValid(); }, 30000)) << path.join(u'\\').toStdString();
        return item(path);
    }
    [[nodiscard]] Qt::CheckState mark(const QStringList& path) const
    {
        return static_cast<Qt::CheckState>(item(path).data(Qt::CheckStateRole).toInt());
    }
    void awaitMark(const QStringList& path, Qt::CheckState state)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return mark(path) == state; }, 30000)) << path.join(u'\\').toStdString();
    }

    // On its row, so many pixels right of where its picture begins.
    [[nodiscard]] QPoint pointOn(const QStringList& path, int x) const
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

const QStringList Documents{"Files", "My Documents"};
const QStringList ToDo{"Files", "My Documents", "To do.txt"};
const QStringList Welcome{"Files", "My Documents", "Welcome.txt"};

TEST_F(TreeTripTest, SelectedItemsBackupHoldsWhatTheMouseMarkedAndNothingElse)
{
    clickButton({"Files"});
    awaitItem(Documents);
    clickButton(Documents);
    awaitItem(Welcome);
    clickLabel(ToDo);
    clickLabel(Welcome);
    awaitMark(Welcome, Qt::Checked);
    clickLabel(Welcome);  // a second click on the selected one takes it back
    awaitMark(Welcome, Qt::Unchecked);
    awaitMark(ToDo, Qt::Checked);
    awaitMark(Documents, Qt::PartiallyChecked);
    awaitMark({"Files"}, Qt::PartiallyChecked);

    choose({"Operations", "Backup", "Selected items..."});
    QWidget& dialog = await("Backup selected Item");
    auto* rows = dialog.findChild<QListView*>();
    ASSERT_EQ(rows->model()->rowCount(), 1);
    EXPECT_EQ(rows->model()->index(0, 0).data().toString(), "File:\\My Documents\\To do.txt");
    press(dialog, Qt::Key_Tab);
    press(dialog, Qt::Key_Return);
    QWidget& chooser = await("Select");
    clickRow(chooser, "\\Storage Card");
    click(chooser, "OK");
    awaitRest();
    const std::u16string name = u"To do.txt";
    const std::string asBytes(reinterpret_cast<const char*>(name.data()), name.size() * 2);
    EXPECT_NE(contentOf(sets() / "QLBX0001.QLT").find(asBytes), std::string::npos);
    // Listed anew after the run.
    EXPECT_TRUE(QTest::qWaitFor([&] { return !item(Documents).isValid(); }, 30000));
    EXPECT_FALSE(tree_->isExpanded(item({"Files"})));
}

TEST_F(TreeTripTest, OnlyLabelAndPictureMarkAndTheExpanderOnlyFolds)
{
    const QModelIndex registry = item({"Registry"});
    const int rightOfLabel = tree_->viewport()->width() - tree_->visualRect(registry).left() - 2;
    clickOn({"Registry"}, rightOfLabel);
    clickOn({"Registry"}, 5, Qt::RightButton);
    EXPECT_EQ(mark({"Registry"}), Qt::Unchecked);
    clickOn({"Registry"}, 5);
    awaitMark({"Registry"}, Qt::Checked);
    EXPECT_TRUE(tree_->selectionModel()->isSelected(registry));

    clickButton({"Files"});
    awaitItem(Documents);
    EXPECT_TRUE(tree_->isExpanded(item({"Files"})));
    EXPECT_TRUE(tree_->selectionModel()->isSelected(registry));
    EXPECT_TRUE(tree_->model()->hasChildren(item(Documents)));
    clickButton({"Files"});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !tree_->model()->rowCount(item({"Files"})); }, 30000));
    EXPECT_FALSE(tree_->isExpanded(item({"Files"})));
    EXPECT_TRUE(tree_->model()->hasChildren(item({"Files"})));

    clickOn({"Files"}, 5);
    act(*tree_->window(), [&] {
        const QPoint point = pointOn({"Files"}, 5);
        QMouseEvent second(QEvent::MouseButtonDblClick, point, tree_->viewport()->mapToGlobal(point), Qt::LeftButton,
                           Qt::LeftButton, {});
        QApplication::sendEvent(tree_->viewport(), &second);
    });
    awaitItem(Documents);
    EXPECT_TRUE(tree_->isExpanded(item({"Files"})));
}

TEST_F(TreeTripTest, KeysMoveMarkAndFoldAndTheViewFollowsTheCaret)
{
    QWidget& main = await("KORV Quillbox");
    ASSERT_EQ(main.focusWidget(), tree_);
    press(main, Qt::Key_Home);
    press(main, Qt::Key_Down);
    EXPECT_EQ(tree_->currentIndex(), item({"Files"}));
    press(main, Qt::Key_Right);
    awaitItem(Documents);
    press(main, Qt::Key_Right);
    EXPECT_EQ(tree_->currentIndex(), tree_->model()->index(0, 0, item({"Files"})));
    for (int row = 0; row < item(Documents).row(); ++row)
        press(main, Qt::Key_Down);
    ASSERT_EQ(tree_->currentIndex(), item(Documents));
    press(main, Qt::Key_Plus, Qt::KeypadModifier);
    awaitItem(Welcome);
    press(main, Qt::Key_End);
    EXPECT_EQ(tree_->currentIndex(), item({"Registry"}));
    EXPECT_TRUE(tree_->viewport()->rect().contains(tree_->visualRect(item({"Registry"}))));
    EXPECT_EQ(mark({"Registry"}), Qt::Checked);  // a caret that lands on it marks it
    type(main, "t");
    EXPECT_EQ(tree_->currentIndex(), item(ToDo));
    EXPECT_EQ(mark(ToDo), Qt::Checked);
    press(main, Qt::Key_Down);
    press(main, Qt::Key_Up);
    EXPECT_EQ(mark(ToDo), Qt::Unchecked);

    // With Ctrl the rows scroll under the caret.
    main.resize(main.width(), main.height() - tree_->height() + 3 * tree_->visualRect(item(ToDo)).height());
    QTest::qWait(0);
    tree_->verticalScrollBar()->setValue(0);
    press(main, Qt::Key_Down, Qt::ControlModifier);
    EXPECT_GT(tree_->verticalScrollBar()->value(), 0);
    EXPECT_EQ(tree_->currentIndex(), item(ToDo));
    press(main, Qt::Key_Home);
    press(main, Qt::Key_Down);
    press(main, Qt::Key_Left);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !item(Documents).isValid(); }, 30000));
    EXPECT_EQ(tree_->currentIndex(), item({"Files"}));
}

TEST_F(TreeTripTest, ScreenReaderHearsMarksAndItsWishesGoToTheProgram)
{
    QAccessible::setActive(true);
    QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(tree_);
    ASSERT_TRUE(reader);
    const auto find = [&](const QString& name) -> QAccessibleInterface* {
        for (int i = 0; i < reader->childCount(); ++i)
            if (reader->child(i) && reader->child(i)->text(QAccessible::Name) == name)
                return reader->child(i);
        return nullptr;
    };
    ASSERT_TRUE(find("Registry"));
    EXPECT_EQ(find("Registry")->text(QAccessible::Description), "not marked");
    EXPECT_TRUE(find("Registry")->state().checkable);
    EXPECT_FALSE(find("Registry")->state().checked);
    EXPECT_EQ(find("Files")->text(QAccessible::Description), "nothing marked");

    // Selected by the reader: the program hears a click and marks.
    act(*tree_->window(),
        [&] { tree_->selectionModel()->setCurrentIndex(item({"Registry"}), QItemSelectionModel::ClearAndSelect); });
    awaitMark({"Registry"}, Qt::Checked);
    EXPECT_EQ(tree_->currentIndex(), item({"Registry"}));
    EXPECT_TRUE(find("Registry")->state().checked);
    EXPECT_EQ(find("Registry")->text(QAccessible::Description), "marked");
    // Turned over by the reader.
    act(*tree_->window(),
        [&] { EXPECT_FALSE(tree_->model()->setData(item({"Registry"}), Qt::Unchecked, Qt::CheckStateRole)); });
    awaitMark({"Registry"}, Qt::Unchecked);
    QAccessible::setActive(false);
}

TEST_F(TreeTripTest, KeyboardComesBackFromTheMenuThatF10Opened)
{
    QWidget& main = await("KORV Quillbox");
    ASSERT_TRUE(QTest::qWaitForWindowActive(&main));
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
