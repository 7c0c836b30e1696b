#include "tools/host/Console.h"

#include "support/Utf8.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

namespace {

void Print(DWORD stream, const XString& text) {
    std::wstring units;
    std::copy_if(text.Text(), text.Text() + text.Size(), std::back_inserter(units),
                 [](wchar_t unit) { return unit != L'\r'; });
    if (units.empty() || units.back() != L'\n') {
        units += L'\n';
    }
    std::vector<char> bytes(units.size() * kMaxUtf8Bytes);
    const size_t size = EncodeUtf8(units, bytes);
    DWORD written = 0;
    SetConsoleOutputCP(CP_UTF8);
    WriteFile(GetStdHandle(stream), bytes.data(), static_cast<DWORD>(size), &written, nullptr);
}

} // namespace

void PrintLine(const XString& text) {
    Print(STD_OUTPUT_HANDLE, text);
}

void PrintError(const XString& text) {
    Print(STD_ERROR_HANDLE, text);
}
