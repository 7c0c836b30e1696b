#pragma once

#include "support/Utf16View.h"

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

    void AppendUnit(wchar_t unit) noexcept {
        if (m_out != nullptr) {
            m_out[m_size] = unit;
        }
        ++m_size;
    }

    void EndLine() const noexcept {}

    /// Code units so far.
    size_t Size() const noexcept { return m_size; }

private:
    wchar_t* m_out;
    size_t m_size = 0;
};
