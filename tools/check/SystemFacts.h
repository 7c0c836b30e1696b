#pragma once

#include <filesystem>
#include <string>

/// What the results may depend on, in lines: the date, the plug-in's version, commit and SHA-256, the
/// versions of Windows, Wine and MSXML, and the user's locale, code page and dpi.
std::string SystemFacts(const std::filesystem::path& plugin, const std::string& commit);
