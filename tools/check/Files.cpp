#include "tools/check/Files.h"

#include "support/Owner.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

/// `folder` begins with "\\?\".
void Remove(const std::wstring& folder) {
    WIN32_FIND_DATAW entry = {};
    OwnedFind search(FindFirstFileW((folder + L"\\*").c_str(), &entry));
    for (bool found = search.IsValid(); found; found = FindNextFileW(search.Get(), &entry)) {
        const std::wstring name = entry.cFileName;
        const std::wstring path = std::wstring(folder).append(L"\\").append(name);
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL); // may be read-only
            DeleteFileW(path.c_str());
        } else if (name != L"." && name != L"..") {
            Remove(path);
        }
    }
    search.Reset();
    RemoveDirectoryW(folder.c_str());
}

} // namespace

std::string Utf8(const fs::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

fs::path SystemFolder() {
    wchar_t path[MAX_PATH] = {};
    GetSystemDirectoryW(path, MAX_PATH);
    return path;
}

std::vector<fs::path> FilesIn(const fs::path& folder, const wchar_t* extension) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == extension) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string ReadFile(const fs::path& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

void RemoveTree(const fs::path& folder) {
    Remove(L"\\\\?\\" + folder.wstring());
}
