#include "bench/Cases.h"
#include "bench/DocumentParts.h"
#include "bench/Rounds.h"

#include <cmath>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

constexpr double kSecondsPerCase = 5;

Rounds::Job JobOf(BareConversion&& bare, WriteDocument&& write) {
    return [bare = std::move(bare), write = std::move(write)] { bare.Run(write); };
}

void WriteNothing(HANDLE /*file*/) {}

} // namespace

void MeasureTypical(const PluginInstance& instance, Report& report) {
    const Blob tags = PackTags(30);
    const Blob properties = PackTags(15);
    const Scene scene(tags, properties);
    scene.CheckCalls(instance);

    const std::string document = ReadBytes(scene.Output());
    std::vector<std::string_view> pieces; // each line and its end
    for (std::string_view rest = document; !rest.empty();) {
        const size_t size = rest.find("\r\n");
        pieces.push_back(rest.substr(0, size));
        pieces.push_back(rest.substr(size, 2));
        rest.remove_prefix(size + 2);
    }
    const auto inPieces = [&](HANDLE file) {
        for (const std::string_view piece : pieces) {
            Write(file, piece.data(), piece.size());
        }
    };
    const auto atOnce = [&](HANDLE file) { Write(file, document.data(), document.size()); };
    const Rounds rounds({[&] { scene.Convert(instance); }, JobOf(scene.Bare(L"pieces"), inPieces),
                         JobOf(scene.Bare(L"at-once"), atOnce)},
                        kSecondsPerCase);
    const std::string name = "bare calls, ready text in " + std::to_string(pieces.size()) + " writes";
    report.Row("typical conversion", name.c_str(), rounds, 1, 1.00);
    report.Row("typical conversion", "bare calls, ready text in one write", rounds, 2);
}

namespace {

struct Goals {
    double limit;
    double peers = Report::kNoGoal;
};

/// Milliseconds that the plug-in takes beyond the bare calls.
double MeasureDocument(const PluginInstance& instance, Report& report, const char* name, Blob&& tags,
                       Goals goals) {
    const Blob kept = tags;
    const Scene scene(kept);
    scene.CheckCalls(instance);
    const DocumentParts document(std::move(tags), ReadBytes(scene.Output()));

    struct Way {
        const char* name;
        const wchar_t* file;
        void (*write)(HANDLE file, const DocumentParts& document);
    };
    constexpr Way kWays[] = {{"single pass", L"limit", WriteInSinglePass},
                             {"RapidXML", L"rapidxml", WriteWithRapidXml},
                             {"XmlLite", L"xmllite", WriteWithXmlLite},
                             {"MSXML", L"msxml", WriteWithMsxml}};
    std::vector<Rounds::Job> jobs = {[&] { scene.Convert(instance); }};
    for (const Way& way : kWays) {
        jobs.push_back(JobOf(scene.Bare(way.file), [&](HANDLE file) { way.write(file, document); }));
        jobs.back()();
        std::string ours = ReadBytes(scene.Output());
        std::string theirs = ReadBytes(scene.Bare(way.file).output);
        Require(way.write == WriteInSinglePass ? ours == theirs
                                               : SaysTheSame(std::move(ours), std::move(theirs)),
                way.name);
    }
    jobs.push_back(JobOf(scene.Bare(L"bare"), WriteNothing));

    const Rounds rounds(jobs, kSecondsPerCase);
    for (size_t way = 0; way < std::size(kWays); ++way) {
        report.Row(name, kWays[way].name, rounds, way + 1, way == 0 ? goals.limit : goals.peers);
    }
    return rounds.Fastest(0) - rounds.Fastest(jobs.size() - 1);
}

/// How the time beyond the bare calls grows with the size: 1 is in proportion.
void ReportGrowth(Report& report, const char* name, double from, double to) {
    report.Number(name, "exponent of growth", std::log10(to / from), 1.1);
}

} // namespace

void MeasureDocuments(const PluginInstance& instance, Report& report) {
    const auto tags = [&](const char* name, int32_t count, Goals goals) {
        return MeasureDocument(instance, report, name, PackTags(count), goals);
    };
    tags("10 tags", 10, {1.10});
    tags("100 tags", 100, {1.10});
    tags("1,000 tags", 1'000, {1.10, 0.999});
    const double few = tags("10,000 tags", 10'000, {1.35, 0.7});
    ReportGrowth(report, "10,000 to 100,000 tags", few, tags("100,000 tags", 100'000, {1.35, 0.5}));

    const auto value = [&](const char* name, size_t size, Text text, double peerGoal) {
        return MeasureDocument(instance, report, name, PackTags(1, size, text), {1.5, peerGoal});
    };
    const double plain = value("1 MB of ordinary text", 1'000'000, Text::Ordinary, 0.85);
    ReportGrowth(report, "1 to 10 MB of ordinary text", plain,
                 value("10 MB of ordinary text", 10'000'000, Text::Ordinary, 0.5));
    const double special = value("1 MB, 10 % special characters", 1'000'000, Text::Special, 0.85);
    ReportGrowth(report, "1 to 10 MB, 10 % special characters", special,
                 value("10 MB, 10 % special characters", 10'000'000, Text::Special, 0.5));
    value("1 MB of ampersands", 1'000'000, Text::Ampersands, 0.85);
    value("100,000 CRs", 1'100'000, Text::ManyValues, 0.85);
}

/// The yardstick is one copy of the entry into memory that is there already.
void MeasurePicture(const PluginInstance& instance, Report& report) {
    const Blob picture = PackPicture(10'000'000);
    const Scene scene(picture);
    scene.Convert(instance);
    const DocumentParts document(Blob(picture), ReadBytes(scene.Output()));
    Blob copy(picture.size());
    const auto write = [&](HANDLE file) {
        std::memcpy(copy.data(), picture.data(), picture.size());
        WriteInSinglePass(file, document);
    };
    const Rounds rounds({[&] { scene.Convert(instance); }, JobOf(scene.Bare(L"copy"), write)},
                        kSecondsPerCase);
    report.Row("10 MB picture", "single pass and one memcpy", rounds, 1, 1.00);
}
