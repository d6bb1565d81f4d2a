#include "run_view.h"

#include <algorithm>

namespace platform::qt {

namespace {

using namespace std::chrono_literals;

// Each item takes some work in addition to the work for its bytes. This constant expresses the additional work as a
// number of bytes, and shareOf() adds it for each item. So the part of the run that is shown as done grows evenly both
// with many small files and with few large ones.
constexpr double BytesOfAnItem = 64 * 1024;

// No estimate is shown before this time has passed and this share is done, because an early estimate would change too
// much.
constexpr auto ShortestWork = 2s;
constexpr double SmallestShare = 0.02;

double shareOf(const kernel::RunProgress& progress)
{
    const double all = static_cast<double>(progress.bytes) + BytesOfAnItem * progress.items;
    const double done = static_cast<double>(progress.bytesDone) + BytesOfAnItem * progress.itemsDone;
    return all > 0 ? std::clamp(done / all, 0.0, 1.0) : 0;
}

}  // namespace

RunView RunClock::look(const kernel::RunProgress& progress, bool waits)
{
    if (progress.number != run_) {
        run_ = progress.number;
        seen_ = worked_ = {};
    }
    if (!waits)
        worked_ += progress.time - seen_;
    seen_ = progress.time;

    RunView view{.progress = progress, .share = shareOf(progress), .remaining = {}, .closesAfterwards = false};
    if (worked_ >= ShortestWork && view.share >= SmallestShare)
        view.remaining = std::chrono::ceil<std::chrono::seconds>(worked_ * ((1 - view.share) / view.share));
    return view;
}

}  // namespace platform::qt
