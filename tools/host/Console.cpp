#include "tools/host/Console.h"

#include "support/Utf8.h"

#include <windows.h>

#include <algorithm>
#include <string>

namespace {

void Print(DWORD stream, const XString& text) {
    SetConsoleOutputCP(CP_UTF8);
    std::string line;
    AppendUtf8(line, text);
    line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
    if (line.empty() || line.back() != '\n') {
        line += '\n';
    }
    DWORD written = 0;
    WriteFile(GetStdHandle(stream), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

} // namespace

void PrintLine(const XString& text) {
    Print(STD_OUTPUT_HANDLE, text);
}

void PrintError(const XString& text) {
    Print(STD_ERROR_HANDLE, text);
}
