#pragma once

#include <windows.h>

#include <ole2.h>

/// Writes what was written to a stream in memory (CreateStreamOnHGlobal).
inline void WriteStream(HANDLE file, IStream* stream) {
    ULARGE_INTEGER size = {};
    stream->Seek({}, STREAM_SEEK_CUR, &size);
    HGLOBAL block = nullptr;
    GetHGlobalFromStream(stream, &block);
    DWORD written = 0;
    WriteFile(file, GlobalLock(block), size.LowPart, &written, nullptr);
    GlobalUnlock(block);
}
