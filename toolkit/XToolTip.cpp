#include "toolkit/XToolTip.h"

#include <atomic>
#include <utility>

namespace {

constexpr UINT kPeriod = 50; // milliseconds

std::atomic<UINT_PTR> lastTimerId = 7787;

} // namespace

void XToolTip::Start(XWindow& owner) {
    Stop();
    const UINT_PTR id = ++lastTimerId;
    owner.StartTimer(id, kPeriod, 0);
    m_owner = &owner;
    m_timerId = id;
}

void XToolTip::Stop() noexcept {
    if (XWindow* owner = std::exchange(m_owner, nullptr); owner != nullptr) {
        owner->StopTimer(m_timerId);
    }
}

LRESULT XToolTip::OnMessage(HWND /*hwnd*/, UINT message, WPARAM wParam, LPARAM /*lParam*/, bool& handled) {
    handled = m_owner != nullptr && message == WM_TIMER && wParam == m_timerId;
    return 0;
}
