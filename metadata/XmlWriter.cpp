#include "metadata/XmlWriter.h"

#include "metadata/XmlText.h"
#include "support/Utf8.h"

#include <algorithm>
#include <utility>

namespace {

/// Texts are appended in slices of this many units, so that a slice fits the chunk whatever it becomes.
constexpr size_t kSliceSize = 1024;
static_assert(kSliceSize * kMostEscapedUnits < XmlWriter::kChunkSize);

Utf16View TakeSlice(Utf16View& text) noexcept {
    const Utf16View slice = text.First(std::min(text.Size(), kSliceSize));
    text = text.After(slice.Size());
    return slice;
}

} // namespace

XmlWriter::XmlWriter(std::string_view lineEnd, Take take)
    : m_lineEnd(lineEnd), m_take(std::move(take)), m_chunk(new wchar_t[kChunkSize]) {}

void XmlWriter::AppendEscaped(Utf16View text) {
    while (!text.IsEmpty()) {
        const Utf16View slice = TakeSlice(text);
        m_size += EscapeXmlText(slice, MakeRoom(slice.Size() * kMostEscapedUnits));
    }
}

void XmlWriter::AppendElementName(Utf16View name) {
    while (!name.IsEmpty()) {
        const Utf16View slice = TakeSlice(name);
        m_size += MakeElementName(slice, MakeRoom(slice.Size()));
    }
}

void XmlWriter::Flush() {
    m_take({m_chunk.get(), m_size});
    m_size = 0;
}

void XmlWriter::HandOn() {
    const wchar_t last = m_chunk[m_size - 1];
    const bool isHalf = IsHighSurrogate(last); // its other half may come next
    m_size -= isHalf ? 1 : 0;
    Flush();
    if (isHalf) {
        m_chunk[m_size++] = last;
    }
}
