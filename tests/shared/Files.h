#pragma once

#include "support/Owner.h"
#include "tests/shared/Wine.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

// Real files for tests.

/// A new empty folder that is removed with all it holds.
class TempFolder {
public:
    TempFolder() {
        wchar_t base[MAX_PATH];
        GetTempPathW(MAX_PATH, base);
        // A test that crashed leaves its folder behind, and process ids are used again.
        static unsigned count = 0;
        do {
            m_folder = std::wstring(base) + L"wmf-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                       std::to_wstring(++count);
        } while (!CreateDirectoryW(m_folder.c_str(), nullptr) && GetLastError() == ERROR_ALREADY_EXISTS);
        EXPECT_TRUE(GetFileAttributesW(m_folder.c_str()) != INVALID_FILE_ATTRIBUTES) << m_folder;
    }
    ~TempFolder() { Remove(m_folder); }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::wstring Path(const std::wstring& name) const { return m_folder + L"\\" + name; }

    /// Deletes a folder and everything below it.
    static void Remove(const std::wstring& folder) {
        // On Windows a virus scanner may keep a new file open.
        const int tries = RunsUnderWine() ? 1 : 99;
        for (int i = 0; i < tries && std::filesystem::exists(folder); ++i) {
            std::error_code error;
            std::filesystem::remove_all(folder, error);
            Sleep(error ? 20 : 0);
        }
    }

private:
    std::wstring m_folder;
};

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// A new file, open for writing and shared with everyone: programs that a test starts may hold on to it.
inline OwnedFile CreateTestFile(const std::wstring& path) {
    OwnedFile file(CreateFileW(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, CREATE_ALWAYS, 0, nullptr));
    EXPECT_TRUE(file.IsValid()) << path;
    return file;
}

inline void WriteTestFile(const std::wstring& path, const std::string& bytes) {
    const OwnedFile file = CreateTestFile(path);
    DWORD written = 0;
    WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    EXPECT_EQ(written, bytes.size());
}

/// The bytes of a file; a failed expectation when it cannot be read.
inline std::string ReadBytes(const std::wstring& path) {
    const OwnedFile file(
        CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(file.IsValid()) << path;
    std::string bytes(file.IsValid() ? GetFileSize(file.Get(), nullptr) : 0, '\0');
    DWORD read = 0;
    ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    EXPECT_EQ(read, bytes.size());
    return bytes;
}

/// The content of a UTF-16 file without byte-order mark.
inline std::wstring ReadUtf16(const std::wstring& path) {
    const std::string bytes = ReadBytes(path);
    EXPECT_EQ(bytes.size() % 2, 0u) << path;
    return std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / 2);
}

/// The lines of a text that ends each with CR LF.
inline std::vector<std::wstring> Lines(const std::wstring& text) {
    std::vector<std::wstring> lines;
    size_t begin = 0;
    for (size_t end = text.find(L"\r\n"); end != std::wstring::npos; end = text.find(L"\r\n", begin)) {
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 2;
    }
    EXPECT_EQ(begin, text.size()) << "the last line has no end";
    return lines;
}
