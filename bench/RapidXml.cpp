#include "bench/DocumentParts.h"

#include <rapidxml/rapidxml.hpp>
#include <rapidxml/rapidxml_print.hpp>

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

using Node = rapidxml::xml_node<char>;

class Tree {
public:
    explicit Tree(const DocumentParts& document) { Build(*this, document); }

    void Begin(std::wstring_view name) { m_open.push_back(Add(name, {})); }
    void End() { m_open.pop_back(); }
    void Leaf(std::wstring_view name, std::wstring_view text) { Add(name, text); }

    void Entry(std::wstring_view element, std::wstring_view name, std::wstring_view value) {
        Node* const node = Add(element, value);
        const std::string_view text = Utf8(name);
        node->append_attribute(m_tree.allocate_attribute("name", text.data(), 4, text.size()));
    }

    void Write(HANDLE file) const {
        const auto bytes = std::make_unique_for_overwrite<char[]>(m_mostBytes);
        const char* const end = rapidxml::print(bytes.get(), m_tree, rapidxml::print_no_indenting);
        DWORD written = 0;
        WriteFile(file, bytes.get(), static_cast<DWORD>(end - bytes.get()), &written, nullptr);
    }

private:
    Node* Add(std::wstring_view name, std::wstring_view text) {
        const std::string_view nodeName = Utf8(name);
        const std::string_view nodeText = Utf8(text);
        Node* const node = m_tree.allocate_node(rapidxml::node_element, nodeName.data(), nodeText.data(),
                                                nodeName.size(), nodeText.size());
        m_open.back()->append_node(node);
        return node;
    }

    /// The text in the tree's own memory.
    std::string_view Utf8(std::wstring_view text) {
        if (text.empty()) {
            return "";
        }
        constexpr size_t kLongestEntity = 6;
        constexpr size_t kFrame = 16;
        m_utf8.resize(std::max(m_utf8.size(), 3 * text.size()));
        size_t size = 0;
        while (size < text.size() && text[size] < 128) {
            m_utf8[size] = static_cast<char>(text[size]);
            ++size;
        }
        if (size < text.size()) {
            size = static_cast<size_t>(
                WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), m_utf8.data(),
                                    static_cast<int>(m_utf8.size()), nullptr, nullptr));
        }
        m_mostBytes += kLongestEntity * size + kFrame;
        char* const kept = m_tree.allocate_string(nullptr, size);
        std::memcpy(kept, m_utf8.data(), size);
        return {kept, size};
    }

    rapidxml::xml_document<char> m_tree;
    std::vector<Node*> m_open = {&m_tree};
    std::string m_utf8;
    size_t m_mostBytes = 1;
};

bool SameNodes(const Node* first, const Node* second) {
    const auto same = [](const auto* one, const auto* other) {
        return std::string_view(one->name(), one->name_size()) ==
                   std::string_view(other->name(), other->name_size()) &&
               std::string_view(one->value(), one->value_size()) ==
                   std::string_view(other->value(), other->value_size());
    };
    if (first == nullptr || second == nullptr) {
        return first == second;
    }
    const auto* const attribute = first->first_attribute();
    const auto* const otherAttribute = second->first_attribute();
    if (!same(first, second) || (attribute == nullptr) != (otherAttribute == nullptr) ||
        (attribute != nullptr && !same(attribute, otherAttribute))) {
        return false;
    }
    const Node* child = first->first_node();
    const Node* other = second->first_node();
    while (child != nullptr && SameNodes(child, other)) {
        child = child->next_sibling();
        other = other->next_sibling();
    }
    return child == nullptr && other == nullptr;
}

} // namespace

void WriteWithRapidXml(HANDLE file, const DocumentParts& document) {
    Tree(document).Write(file);
}

bool SaysTheSame(std::string&& first, std::string&& second) {
    rapidxml::xml_document<char> one;
    rapidxml::xml_document<char> other;
    one.parse<rapidxml::parse_no_string_terminators | rapidxml::parse_validate_closing_tags>(first.data());
    other.parse<rapidxml::parse_no_string_terminators | rapidxml::parse_validate_closing_tags>(second.data());
    return SameNodes(&one, &other);
}
