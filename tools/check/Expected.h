#pragma once

#include <filesystem>
#include <string>

/// An output of the plug-in, which worked in `folder`, without what differs from run to run (times, the
/// folder) and from parser to parser (the HTML page's document type and its own note of the encoding, zeros
/// that follow the end). UTF-16 with a byte-order mark, which Wine makes of some outputs, becomes UTF-8.
std::string Masked(std::string output, const std::filesystem::path& folder);

/// The first lines that differ, side by side from shortly before the difference; empty when none do.
std::string Differences(const std::string& expected, const std::string& made);
