#include "tools/decoders/Format.h"
#include "tools/decoders/Text.h"
#include "tools/decoders/WaveFile.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

namespace {

constexpr uint16_t kPcm = 1;
constexpr uint16_t kFloat = 3;
constexpr uint16_t kExtensible = 0xFFFE;
constexpr uint16_t kExtensionSize = 22;

struct Named {
    uint32_t id;
    const wchar_t* name;
};

constexpr Named kEncodings[] = {
    {kPcm, L"PCM"}, {2, L"Microsoft ADPCM"}, {kFloat, L"IEEE Float"}, {6, L"A-law"},
    {7, L"mu-law"}, {0x11, L"IMA ADPCM"},    {0x50, L"MPEG"},         {0x55, L"MPEG Layer 3"},
};

constexpr Named kInfoNames[] = {
    {RiffId("INAM"), L"Title"},    {RiffId("IART"), L"Artist"},   {RiffId("IPRD"), L"Album"},
    {RiffId("ITRK"), L"Track"},    {RiffId("IPRT"), L"Track"},    {RiffId("ICRD"), L"Date"},
    {RiffId("IGNR"), L"Genre"},    {RiffId("ICMT"), L"Comment"},  {RiffId("ICOP"), L"Copyright"},
    {RiffId("IENG"), L"Engineer"}, {RiffId("IMUS"), L"Composer"}, {RiffId("ISBJ"), L"Subject"},
    {RiffId("IKEY"), L"Keywords"}, {RiffId("ISRC"), L"Source"},   {RiffId("ITCH"), L"Encoded By"},
    {RiffId("ISFT"), L"Encoder"},  {RiffId("ILNG"), L"Language"},
};

/// Null when the table does not know the id.
template<size_t count>
const wchar_t* NameOf(const Named (&table)[count], uint32_t id) noexcept {
    for (const Named& row : table) {
        if (row.id == id) {
            return row.name;
        }
    }
    return nullptr;
}

/// The format tag, or the one that the sub-format of an extensible format stands for.
uint16_t EffectiveTag(const AudioFormat& format) noexcept {
    // {xxxxxxxx-0000-0010-8000-00AA00389B71} carries a plain tag in its first two bytes.
    constexpr uint8_t kTail[] = {0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
    uint16_t tag = format.wFormatTag;
    if (tag == kExtensible && format.cbSize >= kExtensionSize &&
        std::memcmp(format.SubFormat + sizeof tag, kTail, sizeof kTail) == 0) {
        std::memcpy(&tag, format.SubFormat, sizeof tag);
    }
    return tag;
}

/// "0x" and the digits, the highest first.
template<class Number>
std::wstring HexNumber(Number value) {
    uint8_t bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    std::reverse(std::begin(bytes), std::end(bytes));
    return L"0x" + HexText(bytes, sizeof bytes);
}

AudioInfo MakeInfo(const WaveFile& wave, uint64_t fileSize) noexcept {
    AudioInfo info = {};
    info.format = wave.format;
    info.fileSize = static_cast<int64_t>(fileSize);
    if (const uint64_t rate = wave.format.nAvgBytesPerSec; rate != 0) {
        info.bitrate = static_cast<int32_t>((rate * 8 + 500) / 1000);
        info.length = static_cast<int64_t>(wave.audioSize * 1000 / rate);
    }
    return info;
}

void AddProperties(const WaveFile& wave, TagListBuilder& properties) {
    const uint16_t tag = EffectiveTag(wave.format);
    const wchar_t* const encoding = NameOf(kEncodings, tag);
    properties.Add(L"Encoding", encoding != nullptr ? encoding : HexNumber(tag));
    if ((tag == kPcm || tag == kFloat) && wave.format.nBlockAlign != 0) {
        properties.Add(L"Sample Count", std::to_wstring(wave.audioSize / wave.format.nBlockAlign));
    }
    if (wave.format.wFormatTag == kExtensible && wave.format.cbSize >= kExtensionSize) {
        properties.Add(L"Channels Mask", HexNumber<uint32_t>(wave.format.dwChannelMask));
    }
}

/// The known name of an INFO id, else its four characters; empty when they are not printable.
std::wstring InfoName(uint32_t id) {
    if (const wchar_t* const known = NameOf(kInfoNames, id); known != nullptr) {
        return known;
    }
    std::wstring name;
    for (int shift = 0; shift < 32; shift += 8) {
        const wchar_t unit = static_cast<wchar_t>(id >> shift & 0xFF);
        if (unit < L' ' || unit > L'~') {
            return {};
        }
        name += unit;
    }
    return name;
}

void AddInfoTags(Section list, TagListBuilder& tags) {
    uint32_t id = 0;
    uint32_t size = 0;
    while (list.ReadLittle(id) && list.ReadLittle(size)) {
        Section entry = list.Take(size);
        list.Skip(size & 1);
        const std::wstring name = InfoName(id);
        std::string text;
        if (!name.empty() && entry.ReadText(text, entry.Left())) {
            tags.Add(name, FromUtf8OrAnsi(text));
        }
    }
}

} // namespace

const wchar_t* FormatExtension(uint32_t index) noexcept {
    constexpr const wchar_t* kExtensions[] = {L".wav", L".wave"};
    return index < std::size(kExtensions) ? kExtensions[index] : nullptr;
}

bool ReadFormat(BoundedFile& file, uint32_t openFlags, AudioFacts& facts) {
    WaveFile wave;
    if (!ReadWaveFile(file, wave)) {
        return false;
    }
    facts.info = MakeInfo(wave, file.Size());
    AddProperties(wave, facts.properties);
    if ((openFlags & kOpenIDTags) != 0) {
        for (const Section& list : wave.infoLists) {
            AddInfoTags(list, facts.tags);
        }
    }
    return true;
}
