#pragma once

#include "support/XString.h"
#include "tools/host/PluginLibrary.h"

/// Shows the plug-in's settings panel in a window with the host's own OK and Cancel buttons, filled from
/// `settings`, and waits for the user. True when the user confirmed: `settings` is then the new text. False
/// when the user cancelled, or, after an error line, when there is nothing to show.
bool ShowPanel(const PluginInstance& instance, XString& settings);
