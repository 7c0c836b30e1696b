#include "support/XStringList.h"

#include <algorithm>
#include <utility>

void XStringList::Add(XString&& text) {
    if (m_items.size() == m_capacity) {
        m_items.reserve(m_capacity + m_growStep);
        m_capacity += m_growStep;
        m_growStep = std::min(m_growStep * 2, kLargestStep);
    } else if (m_items.empty()) {
        m_items.reserve(m_capacity);
    }
    m_items.push_back(std::move(text));
}

void XStringList::Clear() noexcept {
    *this = XStringList();
}
