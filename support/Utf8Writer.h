#pragma once

#include "support/Utf16View.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

/// Writes text to a file as UTF-8, in large pieces, without byte-order mark. An unpaired surrogate becomes
/// U+FFFD, as WideCharToMultiByte makes it; the halves of a pair may come one after the other.
///
/// `File` has `bool Write(const void* data, size_t size)`. After a write that failed nothing more is written,
/// so that what is there is the text's beginning. All memory is taken by the constructor. Pure code.
template<class File>
class Utf8Writer {
public:
    /// Bytes: few writes for a large document, and within a processor's second cache.
    static constexpr size_t kPieceSize = 262144;

    explicit Utf8Writer(File& file) : m_file(file), m_piece(new char[kPieceSize]) {}

    /// `ascii` must be shorter than a piece.
    void Append(std::string_view ascii) noexcept {
        if (Room() < ascii.size()) [[unlikely]] {
            Flush();
        }
        std::memcpy(&m_piece[m_size], ascii.data(), ascii.size());
        m_size += ascii.size();
    }

    /// Appends the units of `text` up to the first that is not ASCII or is one of `stops`, and returns how
    /// many those were.
    template<class... Stops>
    size_t AppendAsciiUntil(Utf16View text, Stops... stops) noexcept {
        size_t done = 0;
        for (size_t copied = 0, most = 0; done < text.Size() && copied == most; done += copied) {
            if (Room() == 0) [[unlikely]] {
                Flush();
            }
            most = std::min(text.Size() - done, Room());
            copied = CopyAsciiUntil(&m_piece[m_size], text.After(done).First(most), stops...);
            m_size += copied;
        }
        return done;
    }

    /// Appends the units of `text` up to the first that is not ASCII, except those that `isLeftOut` names,
    /// and returns how many were passed over.
    template<class IsLeftOut>
    size_t AppendAsciiWithout(IsLeftOut isLeftOut, Utf16View text) noexcept {
        size_t done = 0;
        while (done < text.Size() && text[done] < 0x80) {
            if (Room() == 0) [[unlikely]] {
                Flush();
            }
            const size_t end = done + std::min(text.Size() - done, Room());
            char* out = &m_piece[m_size];
            for (; done < end && text[done] < 0x80; ++done) {
                *out = static_cast<char>(text[done]);
                out += isLeftOut(text[done]) ? 0 : 1;
            }
            m_size = static_cast<size_t>(out - m_piece.get());
        }
        return done;
    }

    void AppendUnit(wchar_t unit) noexcept {
        if ((unit & kSurrogateMask) == kLowSurrogate && m_size == m_highEnd) {
            // Completes the pair whose first half has been replaced.
            m_size -= 3;
            Put4(0x10000u + ((m_high & 0x3FFu) << 10) + (unit & 0x3FFu));
            return;
        }
        if (Room() < kMostBytes) [[unlikely]] {
            Flush();
        }
        if (unit < 0x80) {
            m_piece[m_size++] = static_cast<char>(unit);
        } else if (unit < 0x800) {
            m_piece[m_size++] = static_cast<char>(0xC0 | (unit >> 6));
            PutTail(unit);
        } else if ((unit & kSurrogateMask) == kHighSurrogate) {
            Put3(kReplacement);
            m_high = unit;
            m_highEnd = m_size;
        } else {
            Put3((unit & kSurrogateMask) == kLowSurrogate ? kReplacement : unit);
        }
    }

    /// Appends and ends the line with CR LF. `ascii` must be shorter than a piece.
    void AppendLine(std::string_view ascii) noexcept {
        Append(ascii);
        Append("\r\n");
    }

    /// How much was appended so far, for Repeat.
    size_t Position() const noexcept { return m_written + m_size; }

    /// Appends once more what was appended between two positions; false, and nothing is appended, when that
    /// is nothing or is no longer at hand.
    bool Repeat(size_t begin, size_t end) noexcept {
        if (begin == end || begin < m_written || Room() < end - begin) {
            return false;
        }
        std::memcpy(&m_piece[m_size], &m_piece[begin - m_written], end - begin);
        m_size += end - begin;
        return true;
    }

    /// Writes what is still held; nothing else does at the end.
    void Flush() noexcept {
        m_intact = m_intact && m_file.Write(m_piece.get(), m_size);
        m_written += m_size;
        m_size = 0;
        m_highEnd = kNone;
    }

private:
    static constexpr size_t kMostBytes = 4; // of one character
    static constexpr size_t kNone = kPieceSize + 1;
    static constexpr uint32_t kSurrogateMask = 0xFC00;
    static constexpr uint32_t kHighSurrogate = 0xD800;
    static constexpr uint32_t kLowSurrogate = 0xDC00;
    static constexpr uint32_t kReplacement = 0xFFFD;

    /// As AppendAsciiUntil; `out` has room for all of the text.
    template<class... Stops>
    static size_t CopyAsciiUntil(char* out, Utf16View text, Stops... stops) noexcept {
        size_t done = 0;
        for (; text.Size() - done >= UnitBlock::kSize; done += UnitBlock::kSize) {
            const UnitBlock block = text.BlockAt(done);
            if (!block.IsAsciiWithout(stops...)) {
                break;
            }
            block.StoreAsBytes(out + done);
        }
        for (; done < text.Size() && text[done] < 0x80 && ((text[done] != stops) && ...); ++done) {
            out[done] = static_cast<char>(text[done]);
        }
        return done;
    }

    size_t Room() const noexcept { return kPieceSize - m_size; }

    void PutTail(uint32_t bits) noexcept { m_piece[m_size++] = static_cast<char>(0x80 | (bits & 0x3F)); }
    void Put3(uint32_t character) noexcept {
        m_piece[m_size++] = static_cast<char>(0xE0 | (character >> 12));
        PutTail(character >> 6);
        PutTail(character);
    }
    void Put4(uint32_t character) noexcept {
        m_piece[m_size++] = static_cast<char>(0xF0 | (character >> 18));
        PutTail(character >> 12);
        PutTail(character >> 6);
        PutTail(character);
    }

    File& m_file;
    std::unique_ptr<char[]> m_piece;
    size_t m_written = 0;     // bytes of earlier pieces
    size_t m_size = 0;        // of what the piece holds
    size_t m_highEnd = kNone; // where the replacement of a high surrogate ends in it
    wchar_t m_high = 0;       // that surrogate
    bool m_intact = true;
};
