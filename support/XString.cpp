#include "support/XString.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

namespace {

wchar_t FoldCase(wchar_t unit) noexcept {
    return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit - L'A' + L'a') : unit;
}

} // namespace

XString::XString(XString&& other) noexcept
    : m_buffer(std::move(other.m_buffer)), m_length(std::exchange(other.m_length, size_t{1})),
      m_capacity(std::exchange(other.m_capacity, size_t{0})) {}

XString& XString::operator=(XString&& other) noexcept {
    if (this != &other) {
        m_buffer = std::move(other.m_buffer);
        m_length = std::exchange(other.m_length, size_t{1});
        m_capacity = std::exchange(other.m_capacity, size_t{0});
    }
    return *this;
}

const wchar_t* XString::Text() const noexcept {
    return m_buffer ? m_buffer.get() : L"";
}

void XString::Assign(const wchar_t* src, size_t length) {
    if (src == nullptr) {
        length = 1;
    } else if (length == 0) {
        length = TextSize(src) + 1;
    }
    if (length == 1) {
        Terminate(1);
        return;
    }
    Buffer old; // outlives the copy: `src` may lie in it
    if (m_capacity < length) {
        Buffer fresh(new wchar_t[length]);
        old = std::exchange(m_buffer, std::move(fresh));
        m_capacity = length;
    }
    // The text may overlap its own buffer when it is assigned from its own tail; that copies downwards.
    std::copy(src, src + length - 1, m_buffer.get());
    Terminate(length);
}

void XString::Append(const wchar_t* units, size_t size) {
    if (size == 0) {
        return;
    }
    const size_t length = m_length + size;
    Buffer old; // outlives the copy: `units` may lie in it
    if (m_capacity < length) {
        const size_t capacity = length + length / 2;
        Buffer fresh(new wchar_t[capacity]);
        std::copy_n(Text(), Size(), fresh.get());
        old = std::exchange(m_buffer, std::move(fresh));
        m_capacity = capacity;
    }
    std::copy_n(units, size, m_buffer.get() + Size());
    Terminate(length);
}

void XString::DropLast(size_t count) noexcept {
    Terminate(m_length - std::min(count, Size()));
}

XString XString::Mid(size_t firstPos, size_t lastPos) const {
    lastPos = std::min(lastPos, Size());
    if (firstPos < 1 || firstPos > lastPos) {
        return XString();
    }
    return XString(Text() + firstPos - 1, lastPos - firstPos + 1);
}

size_t XString::Find(wchar_t unit, size_t fromPos) const noexcept {
    if (fromPos < 1 || fromPos > Size()) {
        return 0;
    }
    const wchar_t* end = Text() + Size();
    const wchar_t* found = std::find(Text() + fromPos - 1, end, unit);
    return found == end ? 0 : static_cast<size_t>(found - Text()) + 1;
}

size_t XString::FindLast(wchar_t unit) const noexcept {
    size_t pos = Size();
    while (pos > 0 && At(pos) != unit) {
        --pos;
    }
    return pos;
}

XString XString::FromInt64(int64_t value) {
    char digits[20]; // 19 digits and a sign
    const std::to_chars_result end = std::to_chars(std::begin(digits), std::end(digits), value);
    wchar_t units[std::size(digits)] = {};
    return XString(units, static_cast<size_t>(std::copy(digits, end.ptr, units) - units));
}

void XString::Terminate(size_t length) noexcept {
    if (m_buffer) {
        m_buffer[length - 1] = 0;
    }
    m_length = length;
}

size_t TextSize(const wchar_t* text) noexcept {
    size_t size = 0;
    while (text != nullptr && text[size] != 0) {
        ++size;
    }
    return size;
}

int Compare(const wchar_t* a, const wchar_t* b, size_t count, bool ignoreCase) noexcept {
    if (b == nullptr) {
        return 1;
    }
    for (size_t i = 0; count == 0 || i < count; ++i) {
        const wchar_t left = ignoreCase ? FoldCase(a[i]) : a[i];
        const wchar_t right = ignoreCase ? FoldCase(b[i]) : b[i];
        if (left != right) {
            return left < right ? -1 : 1;
        }
        if (left == 0) {
            break;
        }
    }
    return 0;
}
