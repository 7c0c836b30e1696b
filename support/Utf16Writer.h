#pragma once

#include "support/Utf16View.h"

#include <algorithm>
#include <string_view>

/// Stores text as it is, UTF-16 with nothing between its lines, or measures it when there is nowhere to
/// store it. Pure code.
class Utf16Writer {
public:
    /// `out` has room for all that will come, or is null.
    explicit Utf16Writer(wchar_t* out) noexcept : m_out(out) {}

    void Append(std::string_view ascii) noexcept {
        for (const char character : ascii) {
            AppendUnit(static_cast<wchar_t>(character));
        }
    }

    /// Appends the units of `text` up to the first that is not ASCII or is one of `stops`, and returns how
    /// many those were.
    template<class... Stops>
    size_t AppendAsciiUntil(Utf16View text, Stops... stops) noexcept {
        size_t done = 0;
        while (done < text.Size() && text[done] < 0x80 && ((text[done] != stops) && ...)) {
            AppendUnit(text[done++]);
        }
        return done;
    }

    /// Appends the units of `text` up to the first that is not ASCII, except those that `isLeftOut` names,
    /// and returns how many were passed over.
    template<class IsLeftOut>
    size_t AppendAsciiWithout(IsLeftOut isLeftOut, Utf16View text) noexcept {
        size_t done = 0;
        for (; done < text.Size() && text[done] < 0x80; ++done) {
            if (!isLeftOut(text[done])) {
                AppendUnit(text[done]);
            }
        }
        return done;
    }

    void AppendUnit(wchar_t unit) noexcept {
        if (m_out != nullptr) {
            m_out[m_size] = unit;
        }
        ++m_size;
    }

    void AppendLine(std::string_view ascii) noexcept { Append(ascii); }

    /// Code units so far.
    size_t Position() const noexcept { return m_size; }

    /// Appends once more what was appended between two positions; false when that is nothing.
    bool Repeat(size_t begin, size_t end) noexcept {
        if (m_out != nullptr) {
            std::copy(m_out + begin, m_out + end, m_out + m_size);
        }
        m_size += end - begin;
        return begin != end;
    }

private:
    wchar_t* m_out;
    size_t m_size = 0;
};
