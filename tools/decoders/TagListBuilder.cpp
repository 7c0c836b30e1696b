#include "tools/decoders/TagListBuilder.h"

#include <cstring>
#include <limits>
#include <utility>

namespace {

constexpr size_t kMaxList = std::numeric_limits<int32_t>::max();

std::wstring UpToZero(std::wstring_view text) {
    return std::wstring(text.substr(0, text.find(L'\0')));
}

std::wstring Folded(std::wstring name) {
    for (wchar_t& unit : name) {
        if (unit >= L'a' && unit <= L'z') {
            unit = static_cast<wchar_t>(unit - L'a' + L'A');
        }
    }
    return name;
}

template<class Unit>
void Append(std::vector<uint8_t>& out, const Unit* units, size_t count) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(units);
    out.insert(out.end(), bytes, bytes + count * sizeof *units);
}

} // namespace

void TagListBuilder::Add(std::wstring_view name, std::wstring_view value, std::string_view data) {
    Entry entry{UpToZero(name), UpToZero(value), data};
    if (data.empty()) {
        const auto [known, isNew] = m_indexByFoldedName.try_emplace(Folded(entry.name), m_entries.size());
        if (!isNew) {
            m_entries[known->second].value += L'\r' + entry.value;
            return;
        }
    }
    m_entries.push_back(std::move(entry));
}

std::vector<uint8_t> TagListBuilder::Pack() const {
    int32_t count = 0;
    std::vector<uint8_t> list(sizeof count);
    for (const Entry& entry : m_entries) {
        const size_t units = entry.name.size() + 1 + entry.value.size() + 1;
        const size_t size = sizeof(int32_t) + units * sizeof(wchar_t) + entry.data.size();
        if (size <= kMaxList - list.size()) {
            const int32_t entrySize = static_cast<int32_t>(size);
            Append(list, &entrySize, 1);
            Append(list, entry.name.c_str(), entry.name.size() + 1);
            Append(list, entry.value.c_str(), entry.value.size() + 1);
            Append(list, entry.data.data(), entry.data.size());
            ++count;
        }
    }
    std::memcpy(list.data(), &count, sizeof count);
    return list;
}
