#pragma once

#include "support/Owner.h"

#include <functional>

/// Does the work on a thread of its own, which the destructor waits for. std::thread takes events of the
/// process for its runtime's locks, and keeps them.
class Thread {
public:
    explicit Thread(std::function<void()> work)
        : m_work(std::move(work)), m_handle(CreateThread(nullptr, 0, Run, &m_work, 0, nullptr)) {}
    ~Thread() { WaitForSingleObject(m_handle.Get(), INFINITE); }
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

private:
    static DWORD WINAPI Run(void* work) {
        (*static_cast<std::function<void()>*>(work))();
        return 0;
    }

    std::function<void()> m_work;
    OwnedHandle m_handle;
};
