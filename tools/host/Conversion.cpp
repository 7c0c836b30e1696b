#include "tools/host/Conversion.h"

#include "tools/decoders/MappedFile.h"
#include "tools/decoders/WaveFile.h"
#include "tools/host/Console.h"
#include "tools/host/DecoderFolder.h"

#include <string>

namespace {

constexpr size_t kBlockSize = 65536;

/// Whether an export answered 1; else reports it.
bool IsDone(const wchar_t* name, int32_t answer) {
    if (answer != 1) {
        PrintError(Concat(L"The plug-in answers ", XString::FromInt64(answer), L" to ", name));
    }
    return answer == 1;
}

bool PassAudio(const PluginInstance& instance, const XString& source) {
    MappedFile file;
    if (!file.Open(source.Text())) {
        PrintError(Concat(L"Cannot open ", source));
        return false;
    }
    WaveFile wave;
    Reader audio(ReadWaveFile(file.Bytes(), wave) ? wave.audio : file.Bytes());
    while (audio.Remaining() != 0) {
        const std::string_view block = audio.Take(kBlockSize);
        std::string passed(block);
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

} // namespace

bool RunConversion(const PluginInstance& instance, const Options& options) {
    const PluginLibrary& plugin = instance.Plugin();
    const bool hasSource = Compare(options.source.Text(), L"-") != 0;
    clZentaroDecoder decoders[2];
    DecoderReport source = {};
    DecoderReport converted = {};
    bool done = !hasSource ||
                ReadWithDecoder(options.source, kOpenAudioInfo | kOpenAudioProperties, decoders[0], source);
    done = ReadWithDecoder(options.converted, kOpenIDTags, decoders[1], converted) && done;
    done = IsDone(L"DSP_BeginConversion",
                  plugin.beginConversion(instance.Get(), nullptr, options.settings.Text(), nullptr)) &&
           done;
    done = (!hasSource || PassAudio(instance, options.source)) && done;
    done = IsDone(L"DSP_EndConversion", plugin.endConversion(instance.Get())) && done;

    AfterConversionInfo info = {};
    info.sourceFileName = options.source.Text();
    info.destFileName = options.converted.Text();
    info.sourceAudioInfo = &source.audioInfo;
    info.destIDTags = converted.idTags.data();
    info.destIDTagsSize = static_cast<uint32_t>(converted.idTags.size());
    info.sourceAudioProperties = source.properties.data();
    info.sourceAudioPropertiesSize = static_cast<uint32_t>(source.properties.size());
    return IsDone(L"DSP_AfterConversion", plugin.afterConversion(instance.Get(), &info)) && done;
}
