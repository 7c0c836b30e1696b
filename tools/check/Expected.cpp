#include "tools/check/Expected.h"

#include "tools/check/Files.h"

#include <algorithm>
#include <cstdio>
#include <regex>
#include <vector>

namespace {

constexpr size_t kColumn = 48;    // characters of a line that are shown
constexpr size_t kBefore = 12;    // of them before the difference
constexpr size_t kLinesShown = 5; // of all that differ

void Replace(std::string& text, const std::string& old, const std::string& by) {
    for (size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += by.size()) {
        text.replace(at, old.size(), by);
    }
}

std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> lines(1);
    for (const char c : text) {
        lines.back() += c;
        if (c == '\n') {
            lines.emplace_back();
        }
    }
    return lines;
}

/// Whether the byte begins a character of UTF-8.
bool IsFirst(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

/// As many characters from the byte at `begin` as fit into a column, control characters in words.
std::string Cell(const std::string& line, size_t begin) {
    std::string cell;
    size_t characters = 0;
    for (size_t at = std::min(begin, line.size()); at < line.size(); ++at) {
        const char c = line[at];
        const std::string shown = c == '\r'   ? "\\r"
                                  : c == '\n' ? "\\n"
                                  : c == '\t' ? "\\t"
                                              : std::string(1, c);
        characters += IsFirst(c) ? shown.size() : 0;
        if (characters > kColumn) {
            break;
        }
        cell += shown;
    }
    return cell + std::string(kColumn - std::min(characters, kColumn), ' ');
}

} // namespace

std::string Masked(std::string output, const std::filesystem::path& folder) {
    if (output.starts_with("\xFF\xFE")) {
        std::u16string units;
        for (size_t at = 2; at + 1 < output.size(); at += 2) {
            units += static_cast<char16_t>(static_cast<unsigned char>(output[at]) |
                                           static_cast<unsigned char>(output[at + 1]) << 8);
        }
        output = Utf8(units);
    }
    output.erase(output.find_last_not_of('\0') + 1);
    std::string path = Utf8(folder);
    Replace(output, path, "FOLDER");
    Replace(path, "\\", "\\\\");
    Replace(output, path, "FOLDER");
    const std::regex time("[0-9]+-[0-9]{1,2}-[0-9]{1,2}([T ])[0-9]{2}:[0-9]{2}:[0-9]{2}");
    output = std::regex_replace(output, time, "0000-00-00$0100:00:00");
    if (output.find("</html>") != std::string::npos) {
        const std::regex own("<!DOCTYPE[^>]*>\\s*|<meta http-equiv=\"?Content-Type\"?[^>]*>\\s*",
                             std::regex::icase);
        output = std::regex_replace(output, own, "");
        output.erase(output.find_last_not_of("\r\n") + 1);
    }
    return output;
}

std::string Differences(const std::string& expected, const std::string& made) {
    std::string table;
    const std::vector<std::string> left = SplitLines(expected);
    const std::vector<std::string> right = SplitLines(made);
    size_t differing = 0;
    for (size_t i = 0; i < std::max(left.size(), right.size()); ++i) {
        const std::string a = i < left.size() ? left[i] : "";
        const std::string b = i < right.size() ? right[i] : "";
        if (a == b || ++differing > kLinesShown) {
            continue;
        }
        const auto same = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin();
        size_t begin = static_cast<size_t>(same);
        for (size_t characters = 0; begin > 0 && characters < kBefore; characters += IsFirst(a[begin])) {
            --begin;
        }
        char number[16];
        std::snprintf(number, sizeof number, "%6zu  ", i + 1);
        table += number + Cell(a, begin) + " | " + Cell(b, begin) + "\n";
    }
    if (differing == 0) {
        return "";
    }
    const std::string heading = "  line  " + Cell("expected", 0) + " | made\n";
    return heading + table + std::to_string(differing) + " lines differ\n";
}
