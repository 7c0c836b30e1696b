#pragma once

#include <filesystem>
#include <string>
#include <vector>

std::string Utf8(const std::filesystem::path& path);

/// Windows' folder for its own libraries and programs.
std::filesystem::path SystemFolder();

/// The files of a folder with that extension, sorted.
std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& folder, const wchar_t* extension);

/// The whole file; empty when it cannot be read.
std::string ReadFile(const std::filesystem::path& path);

/// Removes a folder with paths of any length below it; `folder` is absolute.
void RemoveTree(const std::filesystem::path& folder);
