// dialog_layout_test.cpp - dialogs as their templates and the user's font make them.

#include "desktop.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QtTest/QTest>

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

INSTANTIATE_TEST_SUITE_P(Fonts, DialogLayoutTest, testing::Values(7, 9, 11, 18, 24));

}  // namespace
