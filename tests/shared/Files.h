#pragma once

#include "support/Owner.h"
#include "tests/shared/Wine.h"

#include <gtest/gtest.h>

#include <cwchar>
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

    /// Deletes a folder, given as a whole path, and everything below it.
    static void Remove(const std::wstring& folder) {
        const std::wstring base = (folder.starts_with(L"\\\\") ? L"" : L"\\\\?\\") + folder; // of any length
        WIN32_FIND_DATAW found;
        OwnedFind search(FindFirstFileW((base + L"\\*").c_str(), &found));
        for (bool more = search.IsValid(); more; more = FindNextFileW(search.Get(), &found)) {
            const std::wstring path = base + L"\\" + found.cFileName;
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                // On Windows a virus scanner may keep a new file open.
                for (int i = RunsUnderWine() ? 99 : 0; !DeleteFileW(path.c_str()) && i < 99; ++i) {
                    Sleep(20);
                }
            } else if (std::wcscmp(found.cFileName, L".") != 0 && std::wcscmp(found.cFileName, L"..") != 0) {
                Remove(path);
            }
        }
        search.Reset();
        RemoveDirectoryW(base.c_str());
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
