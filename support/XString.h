#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

/// Code units of a zero-terminated text before its terminator; 0 for null.
size_t TextSize(const wchar_t* text) noexcept;

/// The one text type of the system: an owned, growable, zero-terminated UTF-16 string.
///
/// Positions count from 1. A string that never held text owns no buffer and reads as the empty text.
/// Strings move and never copy by themselves; `Copy` makes a copy where one is meant.
/// Running out of memory throws std::bad_alloc and leaves the string as it was.
/// Pure code: calls no Win32 and none of the C library's wide functions.
class XString {
public:
    XString() noexcept = default;

    /// A copy of a zero-terminated text; null reads as empty.
    explicit XString(const wchar_t* text) { Assign(text); }

    /// A copy of `size` code units; no terminator is needed or read.
    XString(const wchar_t* units, size_t size) { Assign(units, size + 1); }

    XString(XString&& other) noexcept;
    XString& operator=(XString&& other) noexcept;
    XString(const XString&) = delete;
    XString& operator=(const XString&) = delete;
    ~XString() = default;

    /// The zero-terminated text, never null; valid until the string is changed, moved or destroyed.
    const wchar_t* Text() const noexcept;

    /// Code units without the terminator.
    size_t Size() const noexcept { return m_length - 1; }

    /// Code units with the terminator: an empty string has length 1.
    size_t Length() const noexcept { return m_length; }

    bool IsEmpty() const noexcept { return m_length == 1; }

    /// The unit at `pos`, which must lie in 1 … Length(); the last one is the terminator.
    wchar_t At(size_t pos) const noexcept { return Text()[pos - 1]; }

    /// A copy of the whole text.
    XString Copy() const { return XString(Text(), Size()); }

    /// Replaces the content. `length` counts the terminator, which is written and not read; 0 means that
    /// `src` is zero-terminated and is counted. A null or empty `src` empties the string. `src` may be part
    /// of the string's own text.
    void Assign(const wchar_t* src, size_t length = 0);

    /// Adds a zero-terminated text (not null) at the end, which may be the string's own text. Many appended
    /// texts take time in proportion to their sizes.
    void Append(const wchar_t* src) { Append(src, TextSize(src)); }
    void Append(const wchar_t* units, size_t size);
    void Append(const XString& src) { Append(src.Text(), src.Size()); }

    /// Removes the last `count` characters, or all there are.
    void DropLast(size_t count) noexcept;

    /// The inclusive range `firstPos` … `lastPos`; `lastPos` is clamped to the end, and a range that is empty
    /// or begins outside the text gives the empty string.
    XString Mid(size_t firstPos, size_t lastPos) const;

    /// Position of the first `unit` at or after `fromPos`, or 0; also 0 when `fromPos` lies outside the text.
    size_t Find(wchar_t unit, size_t fromPos) const noexcept;

    /// Position of the last `unit`, or 0.
    size_t FindLast(wchar_t unit) const noexcept;

    /// Decimal text, "-" in front of a negative value, no grouping.
    static XString FromInt64(int64_t value);

private:
    using Buffer = std::unique_ptr<wchar_t[]>;

    void Terminate(size_t length) noexcept;

    Buffer m_buffer;
    size_t m_length = 1;
    size_t m_capacity = 0; // code units that the buffer holds
};

/// Compares two zero-terminated texts unit by unit: -1, 0 or +1. `b` may be null, which gives +1; `a` may
/// not. A `count` other than 0 ends the comparison after that many equal units, so that the length of a
/// prefix makes a prefix test. `ignoreCase` folds A to Z and nothing else.
int Compare(const wchar_t* a, const wchar_t* b, size_t count = 0, bool ignoreCase = false) noexcept;
