#include "controls/control_classes.h"
#include "window/core.h"

#include "ce/controls.h"

#include <algorithm>
#include <tuple>

namespace platform::window {

namespace {

struct ProgressState : ClassState {
    int low = 0;
    int high = 100;
    int step = 10;
    int position = 0;

    void describe(const Window&, WindowState& state) const REQUIRES(coreMutex) override
    {
        state.progressLow = low;
        state.progressHigh = high;
        state.progressPosition = position;
    }
};

int moveTo(Window& bar, std::int64_t position) REQUIRES(coreMutex)
{
    auto& state = stateOf<ProgressState>(bar);
    const int before = state.position;
    state.position = static_cast<int>(std::clamp<std::int64_t>(position, state.low, state.high));
    if (state.position != before)
        announce(bar, Change::Progress);
    return before;
}

// A step that ends exactly at the upper limit stays at that limit. Only a step beyond the upper limit starts again at
// the lower limit.
int step(Window& bar) REQUIRES(coreMutex)
{
    const auto& state = stateOf<ProgressState>(bar);
    const std::int64_t sum = std::int64_t{state.position} + state.step;
    return moveTo(bar, sum > state.high ? state.low : sum);
}

LRESULT setRange(Window& bar, LPARAM ends) REQUIRES(coreMutex)
{
    auto& state = stateOf<ProgressState>(bar);
    const DWORD before = MAKELONG(static_cast<WORD>(state.low), static_cast<WORD>(state.high));
    const auto packed = static_cast<DWORD>(ends);
    std::tie(state.low, state.high) = std::minmax(int{LOWORD(packed)}, int{HIWORD(packed)});
    state.position = std::clamp(state.position, state.low, state.high);
    announce(bar, Change::Progress);
    return static_cast<LRESULT>(before);
}

LRESULT progressProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message < PBM_SETRANGE || message > PBM_GETPOS)
        return DefWindowProcW(handle, message, wParam, lParam);
    const Lock lock(coreMutex);
    Window* bar = findWindow(handle);
    if (!bar)
        return 0;
    auto& state = stateOf<ProgressState>(*bar);
    switch (message) {
    case PBM_SETRANGE:
        return setRange(*bar, lParam);
    case PBM_SETPOS:
        return moveTo(*bar, static_cast<int>(wParam));
    case PBM_DELTAPOS:
        return moveTo(*bar, std::int64_t{state.position} + static_cast<int>(wParam));
    case PBM_SETSTEP:
        return std::exchange(state.step, static_cast<int>(wParam));
    case PBM_STEPIT:
        return step(*bar);
    case PBM_GETPOS:
        return state.position;
    default:
        return 0;
    }
}

}  // namespace

WindowClass progressClass()
{
    return {u"msctls_progress32", progressProcedure, WindowKind::ProgressBar, false, makeStateOf<ProgressState>, 0};
}

}  // namespace platform::window
