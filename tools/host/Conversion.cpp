#include "tools/host/Conversion.h"

#include "tools/decoders/WaveFile.h"
#include "tools/host/Console.h"

#include <algorithm>
#include <vector>

namespace {

constexpr uint64_t kBlockSize = 65536;

/// Whether an export answered 1; else reports it.
bool IsDone(const wchar_t* name, int32_t answer) {
    if (answer != 1) {
        PrintError(Concat(L"The plug-in answers ", XString::FromInt64(answer), L" to ", name));
    }
    return answer == 1;
}

Section AudioOf(BoundedFile& file) {
    Section audio(file);
    WaveFile wave;
    if (ReadWaveFile(file, wave)) {
        audio.Skip(wave.audioOffset);
        audio = audio.Take(wave.audioSize);
    }
    return audio;
}

} // namespace

bool Conversion::HasSourceFile() const noexcept {
    return Compare(m_options.source.Text(), L"-") != 0;
}

bool Conversion::GatherFacts() {
    const bool hasSource = !HasSourceFile() ||
                           ReadWithDecoder(m_options.source, kOpenAudioInfo | kOpenAudioProperties, m_source);
    const bool hasConverted = ReadWithDecoder(m_options.converted, kOpenIDTags, m_converted);
    return hasSource && hasConverted;
}

bool Conversion::PassAudio(const PluginInstance& instance) {
    BoundedFile file;
    if (!file.Open(m_options.source.Text())) {
        PrintError(Concat(L"Cannot open ", m_options.source));
        return false;
    }
    Section audio = AudioOf(file);
    std::vector<uint8_t> block;
    while (audio.Left() != 0) {
        if (!audio.ReadBytes(block, std::min(kBlockSize, audio.Left()))) {
            PrintError(Concat(L"Cannot read ", m_options.source));
            return false;
        }
        std::vector<uint8_t> passed = block;
        const uint32_t size = static_cast<uint32_t>(passed.size());
        if (!IsDone(L"DSP_PassAudioBlock",
                    instance.Plugin().passAudioBlock(instance.Get(), passed.data(), size))) {
            return false;
        }
        if (passed != block) {
            PrintError(XString(L"The plug-in changed the audio"));
            return false;
        }
    }
    return true;
}

bool Conversion::Run(const PluginInstance& instance) {
    const PluginLibrary& plugin = instance.Plugin();
    bool done = IsDone(L"DSP_BeginConversion",
                       plugin.beginConversion(instance.Get(), nullptr, m_options.settings.Text(), nullptr));
    if (HasSourceFile()) {
        done = PassAudio(instance) && done;
    }
    done = IsDone(L"DSP_EndConversion", plugin.endConversion(instance.Get())) && done;

    AfterConversionInfo info = {};
    info.sourceFileName = m_options.source.Text();
    info.destFileName = m_options.converted.Text();
    info.sourceAudioInfo = &m_source.audioInfo;
    info.destIDTags = m_converted.idTags.data();
    info.destIDTagsSize = static_cast<uint32_t>(m_converted.idTags.size());
    info.sourceAudioProperties = m_source.properties.data();
    info.sourceAudioPropertiesSize = static_cast<uint32_t>(m_source.properties.size());
    return IsDone(L"DSP_AfterConversion", plugin.afterConversion(instance.Get(), &info)) && done;
}
