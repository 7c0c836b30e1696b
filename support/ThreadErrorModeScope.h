#pragma once

#include <windows.h>

/// For the life of the scope the calling thread gets an error where the system would otherwise show a modal
/// message box, such as "Bad Image" for a damaged library or "No disk" for an empty drive.
class ThreadErrorModeScope {
public:
    ThreadErrorModeScope() noexcept : m_before(GetThreadErrorMode()) {
        SetThreadErrorMode(m_before | SEM_FAILCRITICALERRORS, nullptr);
    }
    ~ThreadErrorModeScope() { SetThreadErrorMode(m_before, nullptr); }
    ThreadErrorModeScope(const ThreadErrorModeScope&) = delete;
    ThreadErrorModeScope& operator=(const ThreadErrorModeScope&) = delete;

private:
    DWORD m_before;
};
