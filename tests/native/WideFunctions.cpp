// The C library's wide functions that the headers of the C++ library and GoogleTest call, for wide characters
// of 16 bits.

#include <algorithm>
#include <cstring>
#include <cwchar>

static_assert(sizeof(wchar_t) == 2);

extern "C" {

size_t wcslen(const wchar_t* text) noexcept {
    size_t size = 0;
    while (text[size] != 0) {
        ++size;
    }
    return size;
}

int wmemcmp(const wchar_t* a, const wchar_t* b, size_t count) noexcept {
    const auto [left, right] = std::mismatch(a, a + count, b);
    return left == a + count ? 0 : *left - *right;
}

wchar_t* wmemmove(wchar_t* out, const wchar_t* units, size_t count) noexcept {
    return static_cast<wchar_t*>(std::memmove(out, units, count * sizeof(wchar_t)));
}

wchar_t* wmemcpy(wchar_t* out, const wchar_t* units, size_t count) noexcept {
    return wmemmove(out, units, count);
}

wchar_t* wmemset(wchar_t* out, wchar_t unit, size_t count) noexcept {
    std::fill_n(out, count, unit);
    return out;
}

wchar_t* wmemchr(const wchar_t* units, wchar_t unit, size_t count) noexcept {
    const wchar_t* found = std::find(units, units + count, unit);
    return found == units + count ? nullptr : const_cast<wchar_t*>(found);
}
}
