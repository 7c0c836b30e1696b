#include <winsock2.h>

namespace {

/// Winsock is up for as long as the library is loaded.
class WinsockScope {
public:
    WinsockScope() noexcept {
        WSADATA data;
        m_started = WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }
    ~WinsockScope() {
        if (m_started) {
            WSACleanup();
        }
    }
    WinsockScope(const WinsockScope&) = delete;
    WinsockScope& operator=(const WinsockScope&) = delete;

private:
    bool m_started = false;
};

const WinsockScope winsock;

} // namespace
