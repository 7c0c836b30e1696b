#pragma once

#include "support/Owner.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// A file opened for reading. Every read is checked against the size that the file had when it was opened.
class BoundedFile {
public:
    /// Opens a path (CreateFileW, shared with everyone who reads or writes); paths of 260 characters or more
    /// get the "\\?\" prefix.
    bool Open(const wchar_t* path);

    uint64_t Size() const noexcept { return m_size; }

    /// Copies `size` bytes from `offset`; false when they are not all there. Small reads are served from a
    /// window of the file, so that many small reads cost few system calls.
    bool ReadAt(uint64_t offset, void* out, size_t size);

private:
    bool ReadFromSystem(uint64_t offset, void* out, size_t size) noexcept;

    OwnedFile m_file;
    uint64_t m_size = 0;
    std::vector<uint8_t> m_window;
    uint64_t m_windowOffset = 0;
};

/// A section of a file, read from front to back. Sizes found in the file can be used unchecked: a read that
/// would go beyond the section fails before anything is allocated, and the position stays.
/// The file must outlive it.
class Section {
public:
    /// The whole file.
    explicit Section(BoundedFile& file) noexcept : m_file(&file), m_end(file.Size()) {}

    /// Where in the file the next byte lies.
    uint64_t Offset() const noexcept { return m_offset; }

    uint64_t Left() const noexcept { return m_end - m_offset; }

    bool Read(void* out, size_t size);

    /// A number as it lies in the file, little-endian.
    bool ReadLittle(uint32_t& value) { return Read(&value, sizeof value); }

    /// A number that lies in the file big-endian.
    bool ReadBig(uint32_t& value);

    bool ReadBytes(std::vector<uint8_t>& out, uint64_t size);

    /// 8-bit text in whatever encoding; also false for a text too long for one tag list.
    bool ReadText(std::string& out, uint64_t size);

    /// Splits off the next `size` bytes, or all that are left.
    Section Take(uint64_t size) noexcept;

    /// Skips `size` bytes, or all that are left.
    void Skip(uint64_t size) noexcept { Take(size); }

private:
    BoundedFile* m_file;
    uint64_t m_offset = 0;
    uint64_t m_end;
};
