#include "tools/decoders/TagListBuilder.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr size_t kLargestList = std::numeric_limits<int32_t>::max();

std::wstring_view UpToZero(std::wstring_view text) noexcept {
    return text.substr(0, text.find(L'\0'));
}

std::wstring Folded(std::wstring_view name) {
    std::wstring folded(name);
    for (wchar_t& unit : folded) {
        if (unit >= L'a' && unit <= L'z') {
            unit = static_cast<wchar_t>(unit - L'a' + L'A');
        }
    }
    return folded;
}

void Append(std::vector<uint8_t>& out, const void* data, size_t size) {
    const size_t end = out.size();
    out.resize(end + size);
    std::copy_n(static_cast<const uint8_t*>(data), size, out.data() + end);
}

void AppendInt32(std::vector<uint8_t>& out, size_t value) {
    const int32_t number = static_cast<int32_t>(value);
    Append(out, &number, sizeof number);
}

/// The text with its terminating zero.
void AppendText(std::vector<uint8_t>& out, const std::wstring& text) {
    Append(out, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

} // namespace

size_t TagListBuilder::Entry::PackedSize() const noexcept {
    return sizeof(int32_t) + (name.size() + 1 + value.size() + 1) * sizeof(wchar_t) + data.size();
}

bool TagListBuilder::TakeRoom(size_t bytes) noexcept {
    if (bytes > kLargestList - m_packedSize) {
        return false;
    }
    m_packedSize += bytes;
    return true;
}

void TagListBuilder::Add(std::wstring_view name, std::wstring_view value) {
    name = UpToZero(name);
    value = UpToZero(value);
    std::wstring folded = Folded(name);
    if (const auto known = m_indexByFoldedName.find(folded); known != m_indexByFoldedName.end()) {
        if (TakeRoom((1 + value.size()) * sizeof(wchar_t))) {
            std::wstring& values = m_entries[known->second].value;
            values += L'\r';
            values += value;
        }
        return;
    }
    Entry entry{std::wstring(name), std::wstring(value), {}};
    if (TakeRoom(entry.PackedSize())) {
        m_indexByFoldedName.emplace(std::move(folded), m_entries.size());
        m_entries.push_back(std::move(entry));
    }
}

void TagListBuilder::AddBinary(std::wstring_view name, std::wstring_view value, std::vector<uint8_t>&& data) {
    Entry entry{std::wstring(UpToZero(name)), std::wstring(UpToZero(value)), std::move(data)};
    if (TakeRoom(entry.PackedSize())) {
        m_entries.push_back(std::move(entry));
    }
}

std::vector<uint8_t> TagListBuilder::Pack() const {
    std::vector<uint8_t> list;
    list.reserve(m_packedSize);
    AppendInt32(list, m_entries.size());
    for (const Entry& entry : m_entries) {
        AppendInt32(list, entry.PackedSize());
        AppendText(list, entry.name);
        AppendText(list, entry.value);
        Append(list, entry.data.data(), entry.data.size());
    }
    return list;
}
