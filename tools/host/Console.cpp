#include "tools/host/Console.h"

#include "support/Utf8Writer.h"

#include <windows.h>

namespace {

struct Stream {
    HANDLE handle;

    bool Write(const void* data, size_t size) const noexcept {
        DWORD written = 0;
        return WriteFile(handle, data, static_cast<DWORD>(size), &written, nullptr) != 0;
    }
};

void Print(DWORD stream, const XString& text) {
    SetConsoleOutputCP(CP_UTF8);
    Stream file{GetStdHandle(stream)};
    Utf8Writer<Stream> out(file);
    for (size_t pos = 1; pos < text.Length(); ++pos) {
        if (text.At(pos) != L'\r') {
            out.AppendUnit(text.At(pos));
        }
    }
    if (text.IsEmpty() || text.At(text.Size()) != L'\n') {
        out.Append("\n");
    }
    out.Flush();
}

} // namespace

void PrintLine(const XString& text) {
    Print(STD_OUTPUT_HANDLE, text);
}

void PrintError(const XString& text) {
    Print(STD_ERROR_HANDLE, text);
}
