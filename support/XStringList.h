#pragma once

#include "support/XString.h"

#include <vector>

/// A growable list of owned strings. Adding may move the entries, so references to them do not last.
/// Pure code.
class XStringList {
public:
    /// Adds at the end, taking the string over.
    void Add(XString&& text);

    /// Adds a copy of a zero-terminated text; null reads as empty.
    void Add(const wchar_t* text) { Add(XString(text)); }

    /// Destroys every entry and returns to the room of a new list.
    void Clear() noexcept;

    size_t Count() const noexcept { return m_items.size(); }

    /// Entries that fit before the list grows: 16 at first, then 32 more, 64 more and so on, the step
    /// doubling up to 500,000.
    size_t Capacity() const noexcept { return m_capacity; }

    /// `index` counts from 0 and must be below Count().
    const XString& operator[](size_t index) const noexcept { return m_items[index]; }

private:
    static constexpr size_t kFirstCapacity = 16;
    static constexpr size_t kFirstStep = 32;
    static constexpr size_t kLargestStep = 500000;

    std::vector<XString> m_items;
    size_t m_capacity = kFirstCapacity;
    size_t m_growStep = kFirstStep;
};
