#include "bench/Writers.h"

#include <rapidxml/rapidxml.hpp>
#include <rapidxml/rapidxml_print.hpp>

#include <algorithm>
#include <cstring>

namespace {

/// The text as UTF-8 in the tree's own memory.
std::string_view Utf8(rapidxml::xml_document<char>& tree, const std::wstring& text, std::string& scratch) {
    if (text.empty()) {
        return "";
    }
    scratch.resize(std::max(scratch.size(), 3 * text.size()));
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                         scratch.data(), static_cast<int>(scratch.size()), nullptr, nullptr);
    char* const bytes = tree.allocate_string(nullptr, static_cast<size_t>(size));
    std::memcpy(bytes, scratch.data(), static_cast<size_t>(size));
    return {bytes, static_cast<size_t>(size)};
}

char* Put(std::string_view bytes, char* out) {
    return out + bytes.copy(out, bytes.size());
}

} // namespace

void WriteWithRapidXml(HANDLE file, const DocumentParts& document) {
    rapidxml::xml_document<char> tree;
    std::string scratch;
    for (const EntryLine& line : document.lines) {
        const std::string_view element = Utf8(tree, line.element, scratch);
        const std::string_view value = Utf8(tree, line.value, scratch);
        const std::string_view name = Utf8(tree, line.name, scratch);
        auto* const node = tree.allocate_node(rapidxml::node_element, element.data(), value.data(),
                                              element.size(), value.size());
        node->append_attribute(tree.allocate_attribute("name", name.data(), 4, name.size()));
        tree.append_node(node);
    }
    const auto bytes = std::make_unique_for_overwrite<char[]>(document.roomSize);
    char* out = Put(document.head, bytes.get());
    for (const auto* node = tree.first_node(); node != nullptr; node = node->next_sibling()) {
        out = Put("\t\t\t", out);
        out = rapidxml::print(out, *node, rapidxml::print_no_indenting);
        out = Put("\r\n", out);
    }
    out = Put(document.tail, out);
    DWORD written = 0;
    WriteFile(file, bytes.get(), static_cast<DWORD>(out - bytes.get()), &written, nullptr);
}
