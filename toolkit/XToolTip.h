#pragma once

#include "toolkit/XWindow.h"

/// The tooltip of a window, driven by a timer on that window. No control has a tooltip text yet, so it has
/// nothing to show: it keeps its timer and takes the ticks.
class XToolTip final : public XWindow {
public:
    /// Sets the timer on `owner`, which must outlive the tooltip or call Stop. 50 ms; the ids are 7788, 7789
    /// and so on through the process. Throws std::bad_alloc.
    void Start(XWindow& owner);

    /// Ends the timer; nothing happens when it does not run.
    void Stop() noexcept;

    /// To be called first with every message of the owner.
    LRESULT OnMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, bool& handled) override;

private:
    XWindow* m_owner = nullptr;
    UINT_PTR m_timerId = 0;
};
