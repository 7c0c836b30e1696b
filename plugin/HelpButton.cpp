#include "plugin/HelpButton.h"

#include "support/ModuleFolder.h"
#include "support/Paths.h"

#include <shellapi.h>

void HelpButton::OnClick() {
    XString page = ModuleFolder(nullptr);
    page.Append(L"Help\\kbn\\DSP.htm");
    ShellExecuteW(nullptr, nullptr, page.Text(), nullptr, GetFilePath(page).Text(), SW_SHOWDEFAULT);
}
