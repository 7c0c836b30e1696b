#pragma once

#include "support/Utf16View.h"

#include <functional>
#include <memory>
#include <span>
#include <string_view>

/// Gathers the text of a document and hands it on in chunks of UTF-16. The constructor takes all the memory
/// that the writer needs, and throws std::bad_alloc; the other functions throw what `take` throws. Pure code.
class XmlWriter {
public:
    /// Code units of a chunk, at most.
    static constexpr size_t kChunkSize = 16384;

    /// Called for each chunk in turn. A chunk never ends between the halves of a surrogate pair.
    using Take = std::function<void(std::wstring_view chunk)>;

    /// `lineEnd` must be ASCII and outlive the writer.
    XmlWriter(std::string_view lineEnd, Take take);

    /// Appends ASCII as it is, less than a chunk.
    void Append(std::string_view ascii) {
        const std::span<wchar_t> room = MakeRoom(ascii.size());
        for (size_t i = 0; i < ascii.size(); ++i) {
            room[i] = static_cast<wchar_t>(ascii[i]);
        }
        m_size += ascii.size();
    }

    /// Appends ASCII, less than a chunk, and ends the line.
    void AppendLine(std::string_view ascii) {
        Append(ascii);
        Append(m_lineEnd);
    }

    /// Appends a text of any size with "&", the double quote, "'", "<" and ">" replaced by their entities.
    /// Everything else is appended as it is, control characters and unpaired surrogates included.
    void AppendEscaped(Utf16View text);

    /// Appends a name of any size without the units that IsLeftOutOfNames names: possibly nothing, and
    /// possibly no name that XML allows.
    void AppendElementName(Utf16View name);

    /// Hands on what is still held. Must be called at the end.
    void Flush();

private:
    /// The free part of the chunk, `size` units at least. Hands on what is held when there is less.
    std::span<wchar_t> MakeRoom(size_t size) {
        if (kChunkSize - m_size < size) [[unlikely]] {
            HandOn();
        }
        return {m_chunk.get() + m_size, kChunkSize - m_size};
    }

    void HandOn();

    std::string_view m_lineEnd;
    Take m_take;
    std::unique_ptr<wchar_t[]> m_chunk;
    size_t m_size = 0; // units that the chunk holds
};
