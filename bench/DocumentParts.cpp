#include "bench/Writers.h"

#include "metadata/TagList.h"
#include "metadata/XmlText.h"
#include "tests/shared/Wide.h"

DocumentParts::DocumentParts(const std::vector<uint8_t>& packedTags, const std::string& document)
    : tags(packedTags) {
    for (const TagEntry& entry : ParseTagBlob(tags.data(), static_cast<int32_t>(tags.size()))) {
        std::wstring element = Wide(entry.name);
        std::erase_if(element, IsLeftOutOfNames);
        SplitValues values(entry.value);
        for (Utf16View value; values.Next(value);) {
            lines.push_back({element, Wide(entry.name), Wide(value)});
        }
    }
    constexpr std::string_view kOpen = "\t\t<IDTags>\r\n";
    head = document.substr(0, document.rfind(kOpen) + kOpen.size());
    tail = document.substr(document.rfind("\t\t</IDTags>\r\n"));
    roomSize = 2 * document.size();
    room = std::make_unique<char[]>(roomSize);
}
