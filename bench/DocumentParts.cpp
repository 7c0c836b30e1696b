#include "bench/DocumentParts.h"

#include <utility>

namespace {

std::wstring Widen(std::string_view ascii) {
    return std::wstring(ascii.begin(), ascii.end());
}

/// One element for each line; the XML declaration is none.
std::vector<FrameElement> Parse(std::string_view lines) {
    std::vector<FrameElement> elements;
    for (; !lines.empty(); lines.remove_prefix(lines.find('\n') + 1)) {
        std::string_view line = lines.substr(lines.find('<') + 1);
        line = line.substr(0, line.find("\r\n") - 1);
        const size_t nameEnd = line.find('>');
        if (line[0] == '/') {
            elements.push_back({FrameElement::End, L"", L""});
        } else if (nameEnd != std::string_view::npos) {
            const std::string_view text = line.substr(nameEnd + 1, line.rfind('<') - nameEnd - 1);
            elements.push_back({FrameElement::Leaf, Widen(line.substr(0, nameEnd)), Widen(text)});
        } else if (line[0] != '?') {
            elements.push_back({FrameElement::Begin, Widen(line), L""});
        }
    }
    return elements;
}

} // namespace

DocumentParts::DocumentParts(Blob&& packedTags, const std::string& written) : tags(std::move(packedTags)) {
    constexpr std::string_view kOpen = "\t\t<IDTags>\r\n";
    head = written.substr(0, written.rfind(kOpen) + kOpen.size());
    tail = written.substr(written.rfind("\t\t</IDTags>\r\n"));
    headElements = Parse(head);
    tailElements = Parse(tail);
    room = std::make_unique<char[]>(2 * written.size());
}
