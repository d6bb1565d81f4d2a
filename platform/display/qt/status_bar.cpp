#include "status_bar.h"

#include "announced_label.h"
#include "shown_text.h"
#include "status_texts.h"

#include <QLabel>
#include <QVBoxLayout>

namespace platform::qt {

namespace {

using window::StatusState;

bool nothingIsMarked(const StatusState& status)
{
    return status.markedFiles == 0 && status.markedDatabases == 0 && !status.registryMarked;
}

bool marksDiffer(const StatusState& one, const StatusState& other)
{
    return one.markedFiles != other.markedFiles || one.markedDatabases != other.markedDatabases ||
           one.registryMarked != other.registryMarked;
}

QString noticeText(const StatusState& status)
{
    QStringList notices;
    if (const QString filter = filterText(status); !filter.isEmpty())
        notices += filter;
    if (status.deletesStored)
        notices += QStringLiteral("A backup deletes the files that it has stored");
    return notices.join(u'\n');
}

QString readyText(const StatusState& status)
{
    if (nothingIsMarked(status) && status.newestSet.empty())
        return QStringLiteral("To begin, mark items in the tree, or choose Operations, Backup, Full...");
    const QString marked = markedText(status);
    return status.device.empty() ? marked : toQt(status.device) + QStringLiteral(": ") + marked;
}

QString lines(QStringList texts)
{
    texts.removeAll(QString());
    return texts.join(u'\n');
}

}  // namespace

StatusBar::StatusBar(QWidget* parent)
    : QStatusBar(parent), notice_(new QLabel), message_(new AnnouncedLabel), newest_(new QLabel)
{
    auto* panel = new QWidget;
    auto* column = new QVBoxLayout(panel);
    const int gap = fontMetrics().averageCharWidth();
    column->setContentsMargins(gap, gap / 2, gap, gap / 2);
    column->setSpacing(0);
    for (QLabel* label : {notice_, static_cast<QLabel*>(message_), newest_}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        column->addWidget(label);
    }
    QFont bold = notice_->font();
    bold.setBold(true);
    notice_->setFont(bold);
    notice_->setContentsMargins(0, 0, 0, gap / 2);
    notice_->hide();
    message_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    addWidget(panel, 1);
    setAccessibleName(QStringLiteral("Status"));
    setSizeGripEnabled(false);  // the window manager's frame is enough
}

void StatusBar::follow(const StatusState& status)
{
    if (marksDiffer(status, status_) && status.jobs == status_.jobs)
        outcome_.clear();
    status_ = status;
    const QString notice = noticeText(status);
    notice_->setText(notice);
    notice_->setVisible(!notice.isEmpty());
    showMessage();
}

void StatusBar::followRun(const RunView& run)
{
    run_.clear();
    if (run.progress.underway) {
        const QString time = (run.closesAfterwards ? closingText(run) + u' ' : QString()) + timeText(run);
        run_ = lines({itemsText(run) + QStringLiteral(", ") + amountText(run), time});
    }
    showMessage();
}

void StatusBar::showOutcome(const QString& outcome)
{
    run_.clear();
    outcome_ = outcome;
    showMessage();
    message_->announce();
}

void StatusBar::present()
{
    if (nothingIsMarked(status_) && status_.newestSet.empty())
        message_->announce();
}

void StatusBar::showMessage()
{
    const QString ready = outcome_.isEmpty() ? readyText(status_) : outcome_;
    message_->setText(run_.isEmpty() ? ready : run_);
    newest_->setText(run_.isEmpty() ? newestSetText(status_) : QString());
    const bool hasNewest = !newest_->text().isEmpty();
    newest_->setVisible(hasNewest);
    // The message and the text about the newest set have a total height of at least two rows. Most texts need no more.
    // So the height of the bar, and of the tree above it, rarely changes when a text changes.
    message_->setMinimumHeight((hasNewest ? 1 : 2) * fontMetrics().lineSpacing());
}

}  // namespace platform::qt
