// Writing and reading back the history text of a large session: 5,000 packages, 500
// preference files and 200 applications. Target: under 100 ms for both together.
//
// The reference beside it is the same data as a plain property list through the same
// zlib and Base64 stages, which is what the keyed archive costs on top of.

#include "archive/Base64.h"
#include "archive/HistoryText.h"
#include "archive/Zlib.h"
#include "unit/archive/SampleRecords.h"

#include <benchmark/benchmark.h>

namespace stowhaven {
namespace {

constexpr int kPackages = 5000;
constexpr int kPreferenceFiles = 500;
constexpr int kApplications = 200;

std::shared_ptr<test::SampleSession> largeSession() {
    return test::makeSampleSession(kPackages, kPreferenceFiles, kApplications);
}

// The session's data as property-list data, nil files as empty data.
PlistValue sessionAsPlist(const test::SampleSession& session) {
    PlistValue::Dictionary preferences;
    for (const auto& [path, contents] : session.preferencesData) {
        preferences.emplace(path, contents.isNull() ? PlistValue::data("") : *contents.plist());
    }
    PlistValue::Array applications;
    for (const auto& application : session.applications) {
        applications.push_back(PlistValue::Dictionary{{"name", *application->name},
                                                      {"identifier", *application->identifier},
                                                      {"size", application->size},
                                                      {"selected", application->selected},
                                                      {"lastUsed", *application->lastUsed}});
    }
    return PlistValue::Dictionary{{"rawData", *session.rawData},
                                  {"preferencesData", std::move(preferences)},
                                  {"applications", std::move(applications)},
                                  {"sessionDate", *session.sessionDate}};
}

void encodeHistoryText(benchmark::State& state) {
    const auto session = largeSession();
    for (auto _ : state) benchmark::DoNotOptimize(HistoryText::encode(session));
}

void decodeHistoryText(benchmark::State& state) {
    const std::string text = *HistoryText::encode(largeSession());
    const ClassRegistry classes = test::sampleClasses();
    state.counters["text bytes"] = static_cast<double>(text.size());
    for (auto _ : state) benchmark::DoNotOptimize(HistoryText::decode(text, classes));
}

void historyTextRoundTrip(benchmark::State& state) {
    const auto session = largeSession();
    const ClassRegistry classes = test::sampleClasses();
    for (auto _ : state) {
        const auto text = HistoryText::encode(session);
        benchmark::DoNotOptimize(HistoryText::decode(*text, classes));
    }
}

void plainPropertyListRoundTrip(benchmark::State& state) {
    const PlistValue plist = sessionAsPlist(*largeSession());
    for (auto _ : state) {
        const std::string text = Base64::encode(Zlib::deflate(*PlistCodec::serialize(plist, PlistFormat::Binary)));
        const auto bytes = Zlib::inflate(*Base64::decode(text), PlistCodec::kMaximumSize);
        benchmark::DoNotOptimize(PlistCodec::parse(*bytes));
    }
}

BENCHMARK(encodeHistoryText)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeHistoryText)->Unit(benchmark::kMillisecond);
BENCHMARK(historyTextRoundTrip)->Unit(benchmark::kMillisecond);
BENCHMARK(plainPropertyListRoundTrip)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace stowhaven
