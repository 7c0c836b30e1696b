#pragma once

#include "support/XString.h"

#include <utility>
#include <vector>

/// A growable list of owned strings. Adding may move the entries, so references to them do not last.
/// Pure code.
class XStringList {
public:
    /// Adds at the end, taking the string over. Throws std::bad_alloc.
    void Add(XString&& text) { m_items.push_back(std::move(text)); }

    /// Destroys every entry.
    void Clear() noexcept { m_items.clear(); }

    size_t Count() const noexcept { return m_items.size(); }

    /// `index` counts from 0 and must be below Count().
    const XString& operator[](size_t index) const noexcept { return m_items[index]; }

private:
    std::vector<XString> m_items;
};
