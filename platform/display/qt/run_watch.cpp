#include "run_watch.h"

#include "kernel/troubles.h"
#include "status_texts.h"

#include "ce/progress.h"

#include <QApplication>
#include <QMessageBox>

#include <algorithm>
#include <chrono>

namespace platform::qt {

namespace {

using namespace std::chrono_literals;

constexpr auto BetweenLooks = 200ms;

// Returns the number of items that failed or that a stopped run didn't reach.
std::size_t itemsLeftOut(const kernel::RunProgress& run)
{
    const kernel::Trouble failed = run.run == RunRestores ? kernel::Trouble::Restoring : kernel::Trouble::Storing;
    std::size_t items = 0;
    for (const kernel::Trouble kind : {failed, kernel::Trouble::Reaching}) {
        for (const kernel::Troubled what :
             {kernel::Troubled::File, kernel::Troubled::Database, kernel::Troubled::Registry})
            items += kernel::troublesOf(kind, what, kernel::Since::Job).size();
    }
    return items;
}

}  // namespace

RunWatch::RunWatch(const Tops& tops, std::function<bool()> programIsIdle)
    : tops_(tops), programIsIdle_(std::move(programIsIdle)), begun_(kernel::runProgress().number), ended_(begun_)
{
    timer_.setInterval(BetweenLooks);
    connect(&timer_, &QTimer::timeout, this, [this] { look(); });
}

void RunWatch::programWorks()
{
    if (!timer_.isActive())
        timer_.start();
}

// A run can begin and end between two calls. So the run's number is compared with that of the last run whose outcome
// was shown.
void RunWatch::look()
{
    const kernel::RunProgress progress = kernel::runProgress();
    if (progress.underway)
        followRun(progress);
    else if (progress.number != ended_)
        endRun(progress);
    else if (programIsIdle_())
        timer_.stop();
}

void RunWatch::followRun(const kernel::RunProgress& progress)
{
    if (begun_ != progress.number)
        desktop_.beginRun(runReason(progress));
    begun_ = progress.number;
    const bool waits = std::ranges::any_of(
        tops_, [](const auto& each) { return qobject_cast<QMessageBox*>(&each.second->widget()) != nullptr; });
    RunView run = clock_.look(progress, waits);
    run.closesAfterwards = std::ranges::any_of(tops_, [](const auto& each) { return each.second->isToClose(); });
    for (const auto& [window, top] : tops_)
        top->followRun(run);
    desktop_.showShare(run.share);
}

void RunWatch::endRun(const kernel::RunProgress& progress)
{
    begun_ = ended_ = progress.number;
    desktop_.endRun();
    const QString outcome = outcomeText(progress, itemsLeftOut(progress));
    for (const auto& [window, top] : tops_) {
        top->followRun({.progress = progress, .share = 1, .remaining = {}, .closesAfterwards = false});
        top->showOutcome(outcome);
    }
    if (!QApplication::activeWindow())
        desktop_.notify(endedText(progress), outcome);
}

}  // namespace platform::qt
