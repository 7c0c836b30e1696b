#pragma once

#include "plugin/HelpButton.h"
#include "support/XString.h"
#include "toolkit/LabelFont.h"
#include "toolkit/XAccessibleName.h"
#include "toolkit/XIcon.h"
#include "toolkit/XToolTip.h"
#include "toolkit/XWindow.h"

#include <windows.h>

#include <cstdint>

/// The settings panel: a modeless dialog inside a window of the host, with a field for the style sheet's path
/// and one for the output's extension. Used on the host's user-interface thread.
class frmDSPSettings final : public XWindow {
public:
    frmDSPSettings() noexcept = default;
    frmDSPSettings(const frmDSPSettings&) = delete;
    frmDSPSettings& operator=(const frmDSPSettings&) = delete;
    ~frmDSPSettings() override { Destroy(); }

    /// Makes the panel as a child of `parent` at (x, y) of its client area, in place of a panel that is still
    /// open, and fills the fields from the settings text; kKeepCoordinate leaves a coordinate to the dialog
    /// manager. A null text reads as empty. Returns the panel's window, or null when it could not be made.
    HWND Show(HWND parent, int32_t x, int32_t y, const wchar_t* settings);

    /// The settings text of what the fields hold now, up to 259 characters of each; both fields are empty
    /// without a panel.
    XString ReadSettings() const;

protected:
    void OnInit() override;
    bool OnDestroy() override;
    void OnPaint() override;
    LRESULT OnMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam, bool& handled) override;

private:
    XString m_settings;
    int32_t m_x = 0;
    int32_t m_y = 0;
    bool m_filled = false; // the panel shows its settings
    XToolTip m_toolTip;
    XIcon m_icon;
    OwnedFont m_labelFont;
    XAccessibleName m_xsltFileName;
    HelpButton m_cmdHelp;
};
