// status_test.cpp - the status bar, the progress window's totals, and dialogs that grow.
#include "desktop.h"

#include "dialog_growth.h"
#include "engine/questions.h"
#include "status_bar.h"
#include "status_texts.h"
#include "window_settings.h"

#include "ce/outcome.h"
#include "ce/progress.h"

#include <QAbstractButton>
#include <QDate>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QProgressBar>
#include <QScrollBar>
#include <QSizeGrip>
#include <QStatusBar>

#include <algorithm>

namespace {

using namespace platform::qt;
using namespace std::chrono_literals;
using platform::kernel::RunProgress;
using platform::window::StatusState;

const DialogOfMenu& FilterMenuDialog = dialogsOfMenu()[0];
const DialogOfMenu& OptionsDialog = dialogsOfMenu()[1];

class StatusTextTest : public testing::Test {
protected:
    StatusTextTest() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
    ~StatusTextTest() override { QLocale::setDefault(usual_); }

private:
    QLocale usual_;
};

TEST_F(StatusTextTest, OutcomeNamesTheSetItsItemsAndWhatIsMissing)
{
    const std::tuple<RunProgress, std::size_t, const char*> cases[] = {
        {{.run = RunStores,
          .listPath = u"\\Stick\\QUILBOX\\QLBX0003.QLT",
          .bytesDone = 38'000'000,
          .made = {214, 3, 1},
          .time = 12s},
         0,
         "Set 3 on \\Stick: 214 files, 3 databases, registry, 38.0 MB in 12 s"},
        {{.run = RunStores, .listPath = u"\\QUILBOX\\QLBX0099.QLT", .bytesDone = 5, .made = {1, 0, 0}, .time = 75s},
         2,
         "Set 99 on the main device: 1 file, 5 bytes in 1:15 min; 2 items left out"},
        {{.run = RunRestores, .listPath = u"\\Stick\\other.QLT", .bytesDone = 5, .made = {0, 1, 0}, .time = 10ms},
         0,
         "Restored from \\Stick\\other.QLT: 1 database in 1 s"},
        {{.run = RunRestores, .listPath = u"\\A\\QUILBOX\\QLBX0001.QLT", .time = 4000s},
         1,
         "Restored from set 1 on \\A: nothing in 1:06:40 min; 1 item left out"},
    };
    for (const auto& [run, leftOut, text] : cases)
        EXPECT_EQ(outcomeText(run, leftOut).toStdString(), text);
}

TEST_F(StatusTextTest, FilterTextNamesEachConditionThatHidesFiles)
{
    StatusState status;
    EXPECT_EQ(filterText(status), QString());
    status.shownExtensions.emplace();
    EXPECT_EQ(filterText(status), "Files shown: none, because the list of extensions is empty");
    status.shownExtensions = {u"txt", u"c"};
    status.shownSince = 133'800'000'000'000'000;
    status.hiddenAttributes = 0x22;
    EXPECT_EQ(filterText(status).toStdString(),
              "Files shown: only *.txt, *.c; written since 12/30/24; not archive or hidden");
}

TEST(RunClockTest, RemainingTimeIsEstimatedFromTheWorkWithoutTheTimeOfQuestions)
{
    RunClock clock;
    RunProgress progress{.number = 1, .underway = true, .listPath = u"", .items = 1000};
    EXPECT_FALSE(clock.look(progress, false).remaining);
    progress.itemsDone = 250;
    progress.time = 10s;
    EXPECT_EQ(clock.look(progress, false).remaining, 30s);
    progress.time = 100s;
    EXPECT_EQ(clock.look(progress, true).remaining, 30s);
    progress.itemsDone = 500;
    progress.time = 110s;
    const RunView run = clock.look(progress, false);
    EXPECT_EQ(run.remaining, 20s);
    EXPECT_DOUBLE_EQ(run.share, 0.5);
    // With a single large item, the share follows the bytes.
    progress = {.number = 2,
                .underway = true,
                .listPath = u"",
                .items = 1,
                .bytes = 1'000'000'000,
                .bytesDone = 600'000'000,
                .time = 6s};
    EXPECT_EQ(clock.look(progress, false).remaining, 5s);  // rounded up
}

TEST(DialogGrowthTest, ListsAndCommentsTakeTheSpaceAndTheOthersMove)
{
    using Kind = GrowingControl::Kind;
    const std::vector<GrowingControl> controls{
        {.rect = {0, 0, 100, 10}, .kind = Kind::Text},
        {.rect = {0, 10, 100, 30}, .kind = Kind::Lines},
        {.rect = {0, 50, 60, 40}, .kind = Kind::List},
        {.rect = {70, 60, 30, 10}, .kind = Kind::Fixed},
        {.rect = {0, 100, 50, 10}, .kind = Kind::Fixed},
        {.rect = {0, 100, 100, 50}, .kind = Kind::List, .visible = false},
    };
    const std::vector<QRect> rects = grown(controls, {20, 40});
    EXPECT_EQ(rects[0], QRect(0, 0, 120, 10));
    EXPECT_EQ(rects[1], QRect(0, 10, 120, 40));
    EXPECT_EQ(rects[2], QRect(0, 60, 80, 70));
    EXPECT_EQ(rects[3], QRect(90, 70, 30, 10));
    EXPECT_EQ(rects[4], QRect(0, 140, 50, 10));
    EXPECT_TRUE(canGrow(controls));
    EXPECT_FALSE(canGrow({controls[0], controls[3], controls[5]}));
}

class StatusTripTest : public Desktop {
protected:
    // Returns all visible texts of the status bar.
    static QString status()
    {
        QStringList texts;
        for (const QLabel* label : await(MainTitle).findChild<QStatusBar*>()->findChildren<QLabel*>()) {
            if (label->isVisible())
                texts += label->text();
        }
        return texts.join(u'\n');
    }
    static void expectStatus(const QString& part)
    {
        EXPECT_TRUE(eventually([&] { return status().contains(part); }))
            << part.toStdString() << " in " << status().toStdString();
    }
    void tick(const DialogOfMenu& dialog, const QString& box)
    {
        click(open(dialog), box);
        click(await(dialog.title), "OK");
        awaitGone(dialog.title);
    }
};

TEST_F(StatusTripTest, FilterAndDeletionAreSaidInTheWindowAndEnterAddsAnExtension)
{
    const QString box = "Show only files with these extentions :";
    QWidget& dialog = open(FilterMenuDialog);
    click(dialog, box);
    type(dialog, "txt");
    press(dialog, Qt::Key_Return);  // adds the extension
    EXPECT_EQ(dialog.findChild<QLineEdit*>()->text(), QString());
    EXPECT_TRUE(findRow(*dialog.findChild<QListView*>()->model(), "txt").isValid());
    press(dialog, Qt::Key_Return);
    awaitGone(FilterMenuDialog.title);
    expectStatus("Files shown: only *.txt");

    QWidget& again = open(FilterMenuDialog);
    clickRow(again, "txt");
    click(again, "Remove");
    click(again, "OK");
    awaitGone(FilterMenuDialog.title);
    expectStatus("Files shown: none, because the list of extensions is empty");
    tick(FilterMenuDialog, box);
    EXPECT_TRUE(eventually([] { return !status().contains("Files shown"); }));

    tick(OptionsDialog, "Delete backuped files");
    expectStatus("A backup deletes the files that it has stored");
    tick(OptionsDialog, "Delete backuped files");
    EXPECT_TRUE(eventually([] { return !status().contains("deletes"); }));
}

// The run has more items than the program's progress bar has steps.
TEST_F(StatusTripTest, RunOfAnyLengthShowsItsTotalsMovesTheBarAndSaysWhatItMade)
{
    BeginRun(RunStores, u"\\Card\\QUILBOX\\QLBX0007.QLT", 5000, 1'000'000);
    for (int item = 0; item < 2500; ++item)
        ReportItemDone(OutcomeFile, 200, TRUE);
    const HWND progress = ProgressOpen(u"Run", u"", 7, 1);
    QWidget& window = await("Run");
    EXPECT_TRUE(platform::window::postResize(platform::window::topLevelWindows().front(), 400,
                                             300));  // a request that the program works on for a moment
    const auto* bar = window.findChild<QProgressBar*>();
    EXPECT_TRUE(eventually([&] { return bar->maximum() == 1000 && bar->value() == 500; })) << bar->value();
    QString details;
    for (const QLabel* label : window.findChildren<QLabel*>())
        details += label->text() + u'\n';
    const QString items = QStringLiteral("%1 of %2 items").arg(QLocale().toString(2500), QLocale().toString(5000));
    EXPECT_TRUE(details.contains(items) && details.contains("so far")) << details.toStdString();
    expectStatus(items);
    EndRun();
    ProgressClose(progress);
    expectStatus("Set 7 on \\Card: " + QLocale().toString(2500) + " files");
}

TEST_F(StatusTripTest, StatusBarHintsHowToBeginAndSaysThatTheWindowClosesAfterTheRun)
{
    StatusBar bar(nullptr);
    const auto shows = [&](const QString& text) {
        const QList<QLabel*> labels = bar.findChildren<QLabel*>();
        return std::ranges::any_of(labels, [&](const QLabel* label) { return label->text().contains(text); });
    };
    bar.follow({});
    EXPECT_TRUE(shows("To begin, mark items in the tree"));
    RunView run;
    run.progress.underway = true;
    run.progress.run = RunStores;
    run.closesAfterwards = true;
    bar.followRun(run);
    EXPECT_TRUE(shows("Closes when the backup is done."));
}

TEST_F(StatusTripTest, OutcomeStaysInTheStatusBarWhileAnotherDialogOpensAndCloses)
{
    backUpAllFiles("Before the journey");
    expectStatus("Set 1 on \\Storage Card: ");
    expectStatus("Newest set: " + QLocale().toString(QDate::currentDate(), QLocale::ShortFormat));

    // The dialog that chooses a set shows date and comment beside it.
    QWidget& chooser = open({{"Operations", "Restore", "Full..."}, "Select"});
    const QAbstractItemModel& rows = *chooser.findChild<QListView*>()->model();
    const QModelIndex set = findRow(rows, "\\Storage Card\\QUILBOX\\QLBX0001.QLT");
    const QString detail = set.data(Qt::AccessibleDescriptionRole).toString();
    EXPECT_TRUE(detail.endsWith("Before the journey")) << detail.toStdString();
    EXPECT_TRUE(detail.contains(QString::number(QDate::currentDate().year())));
    EXPECT_EQ(chooser.findChild<QScrollBar*>()->isVisible(), false);
    leave(chooser);
    expectStatus("Set 1 on \\Storage Card: ");
}

TEST_F(StatusTripTest, DialogGrowsWithItsWindowAndKeepsTheSize)
{
    QWidget& dialog = open(FilterMenuDialog);
    ASSERT_TRUE(dialog.findChild<QSizeGrip*>());
    const auto* list = dialog.findChild<QListView*>();
    const QSize before = list->size();
    const QSize chosen = dialog.size() + QSize(120, 90);
    dialog.resize(chosen);
    EXPECT_EQ(list->size(), before + QSize(120, 90));
    leave(dialog);
    QWidget& again = open(FilterMenuDialog);
    EXPECT_EQ(again.size(), chosen);
    again.resize(10, 10);
    EXPECT_EQ(again.findChild<QListView*>()->size(), before);
    leave(again);
    QWidget& options = open(OptionsDialog);
    EXPECT_EQ(options.minimumSize(), options.maximumSize());
    leave(options);
    windowSettings().remove("dialogs");
}

}  // namespace
