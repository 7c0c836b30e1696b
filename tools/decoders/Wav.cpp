#include "metadata/WaveFormat.h"
#include "tools/decoders/Format.h"
#include "tools/decoders/Text.h"
#include "tools/decoders/WaveFile.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

namespace {

constexpr uint16_t kPcm = 1;
constexpr uint16_t kFloat = 3;
constexpr uint16_t kExtensible = 0xFFFE;
constexpr uint16_t kExtensionSize = 22;

// In UTF-16 it takes twice the room, and a TagBlob counts its bytes in a signed 32-bit number.
constexpr size_t kMaxText = std::numeric_limits<int32_t>::max() / 2;

constexpr std::pair<uint16_t, const wchar_t*> kEncodings[] = {
    {kPcm, L"PCM"}, {2, L"Microsoft ADPCM"}, {kFloat, L"IEEE Float"}, {6, L"A-law"},
    {7, L"mu-law"}, {0x11, L"IMA ADPCM"},    {0x50, L"MPEG"},         {0x55, L"MPEG Layer 3"},
};

constexpr std::pair<std::string_view, const wchar_t*> kInfoNames[] = {
    {"INAM", L"Title"},     {"IART", L"Artist"},   {"IPRD", L"Album"},      {"ITRK", L"Track"},
    {"IPRT", L"Track"},     {"ICRD", L"Date"},     {"IGNR", L"Genre"},      {"ICMT", L"Comment"},
    {"ICOP", L"Copyright"}, {"IENG", L"Engineer"}, {"IMUS", L"Composer"},   {"ISBJ", L"Subject"},
    {"IKEY", L"Keywords"},  {"ISRC", L"Source"},   {"ITCH", L"Encoded By"}, {"ISFT", L"Encoder"},
    {"ILNG", L"Language"},
};

/// Null when the table does not know the id.
template<class Id, size_t count>
const wchar_t* NameOf(const std::pair<Id, const wchar_t*> (&table)[count], Id id) noexcept {
    for (const auto& [known, name] : table) {
        if (known == id) {
            return name;
        }
    }
    return nullptr;
}

void AddProperties(const WaveFile& wave, TagListBuilder& properties) {
    const uint16_t tag = EffectiveTag(wave.format);
    const wchar_t* const encoding = NameOf(kEncodings, tag);
    properties.Add(L"Encoding", encoding != nullptr ? encoding : L"0x" + Hex(tag, 4));
    if ((tag == kPcm || tag == kFloat) && wave.format.nBlockAlign != 0) {
        properties.Add(L"Sample Count", std::to_wstring(wave.audio.size() / wave.format.nBlockAlign));
    }
    if (wave.format.wFormatTag == kExtensible && wave.format.cbSize >= kExtensionSize) {
        properties.Add(L"Channels Mask", L"0x" + Hex(wave.format.dwChannelMask, 8));
    }
}

/// The known name of an INFO id, else its four characters; empty when they are not printable.
std::wstring InfoName(std::string_view id) {
    if (const wchar_t* const known = NameOf(kInfoNames, id); known != nullptr) {
        return known;
    }
    const bool isPrintable = std::all_of(id.begin(), id.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return isPrintable ? std::wstring(id.begin(), id.end()) : std::wstring();
}

void AddInfoTags(Reader list, TagListBuilder& tags) {
    std::string_view id;
    uint32_t size = 0;
    while (list.Read(id, 4) && list.Read(size)) {
        const std::string_view text = list.Take(size);
        list.Take(size & 1);
        if (const std::wstring name = InfoName(id); !name.empty() && text.size() <= kMaxText) {
            tags.Add(name, FromUtf8OrAnsi(text));
        }
    }
}

} // namespace

const wchar_t* FormatExtension(uint32_t index) noexcept {
    constexpr const wchar_t* kExtensions[] = {L".wav", L".wave"};
    return index < std::size(kExtensions) ? kExtensions[index] : nullptr;
}

bool ReadFormat(std::string_view file, FileContent& out) {
    WaveFile wave;
    if (!ReadWaveFile(file, wave)) {
        return false;
    }
    out.info.format = wave.format;
    out.info.fileSize = static_cast<int64_t>(file.size());
    if (const uint64_t rate = wave.format.nAvgBytesPerSec; rate != 0) {
        out.info.bitrate = static_cast<int32_t>((rate * 8 + 500) / 1000);
        out.info.length = static_cast<int64_t>(wave.audio.size() * 1000 / rate);
    }
    AddProperties(wave, out.properties);
    for (const Reader& list : wave.infoLists) {
        AddInfoTags(list, out.tags);
    }
    return true;
}
