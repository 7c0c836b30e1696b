#pragma once

#include "toolkit/XButton.h"

/// The button that opens the converter's help page about its DSP stages.
class HelpButton final : public XButton {
protected:
    /// Opens "Help\kbn\DSP.htm" in the folder of the host's program with whatever shows such files
    /// (ShellExecuteW). Failures, a missing file among them, are ignored.
    void OnClick() override;
};
