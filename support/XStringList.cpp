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

XString Join(const XStringList& list) {
    size_t length = 1;
    for (const XString& text : list) {
        length += text.Size();
    }
    XString joined;
    joined.Reserve(length);
    for (const XString& text : list) {
        joined.Append(text);
    }
    return joined;
}
