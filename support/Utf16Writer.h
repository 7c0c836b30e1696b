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

    /// Appends the units of `text` until one is not `plain`, and returns how many those were.
    template<class IsPlain>
    size_t AppendWhile(IsPlain isPlain, Utf16View text) noexcept {
        size_t done = 0;
        while (done < text.Size() && isPlain(text[done])) {
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
