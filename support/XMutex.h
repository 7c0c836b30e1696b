#pragma once

#include "support/Owner.h"

/// An unnamed mutex (CreateMutexW), not owned at first. One thread may lock it more than once.
class XMutex {
public:
    XMutex() noexcept : m_handle(CreateMutexW(nullptr, FALSE, nullptr)) {}

    /// Holds the mutex for a scope, waiting for it without a time limit. A mutex that could not be created is
    /// ignored: the work goes on without the lock.
    class Lock {
    public:
        explicit Lock(const XMutex& mutex) noexcept : m_handle(mutex.m_handle.Get()) {
            if (m_handle != nullptr) {
                WaitForSingleObject(m_handle, INFINITE);
            }
        }
        ~Lock() {
            if (m_handle != nullptr) {
                ReleaseMutex(m_handle);
            }
        }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        HANDLE m_handle;
    };

private:
    OwnedHandle m_handle;
};
