#pragma once

#include "toolkit/XSubClassCtrl.h"

/// A push button that handles its clicks itself, whatever window is its parent.
class XButton : public XSubClassCtrl {
protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

    /// The button was clicked with the mouse, its access key or the space bar, and its parent has got the
    /// notification. Not called when the parent then destroyed the control; a parent that destroys this
    /// object destroys the control, too.
    virtual void OnClick() {}
};
