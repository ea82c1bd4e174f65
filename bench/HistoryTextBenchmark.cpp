// Writing and reading back the history text of a large session: 5,000 packages, 500
// preference entries and 200 applications. Target: under 100 ms for both together.
//
// The reference beside it is the same data as a plain property list through the same
// zlib and Base64 stages, which is what the keyed archive costs on top of.

#include "archive/Base64.h"
#include "archive/HistoryText.h"
#include "archive/Zlib.h"
#include "core/BackupSession.h"
#include "core/ModelClasses.h"
#include "items/Application.h"
#include "platform/plist/PlistCodec.h"
#include "support/DetachedDevice.h"

#include <benchmark/benchmark.h>
#include <fmt/format.h>

namespace stowhaven {
namespace {

constexpr int kPackages = 5000;
constexpr int kPreferenceFiles = 500;
constexpr int kApplications = 200;

// Packages as stored lines, the package manager's settings inline and the other
// preference files left to the dated folder, applications with every field set.
std::shared_ptr<BackupSession> largeSession() {
    auto session = std::make_shared<BackupSession>();
    session->setTitle("Before the upgrade");
    session->setNbPackages(kPackages);
    std::string rawData;
    for (int index = 0; index < kPackages; ++index) {
        rawData += fmt::format(
            "Package {0}\tcom.example.package{0}\t1.{0}-1\tSandbox Packager\tTweaks\t"
            "mobilesubstrate,preferenceloader\n",
            index);
    }
    session->setRawData(std::move(rawData));
    BackupSession::FileData preferences;
    for (int index = 0; index < kPreferenceFiles; ++index) {
        const std::string path = fmt::format("/var/mobile/Library/Preferences/com.example.tweak{}.plist", index);
        preferences.emplace(path, index == 0 ? PlistValue::data(std::string(4096, 'c')) : PlistValue());
    }
    session->setPreferencesData(std::move(preferences));
    BackupSession::ApplicationList applications;
    for (int index = 0; index < kApplications; ++index) {
        auto application = std::make_shared<Application>(fmt::format("Application {}", index));
        application->setDisplayName(fmt::format("App {}", index));
        application->setBundleIdentifier(fmt::format("com.example.app{}", index));
        const std::string container = fmt::format("/var/mobile/Containers/Data/Application/{:08X}", index);
        application->setHomePath(fmt::format("/var/mobile/Containers/Bundle/Application/{:08X}/App.app", index));
        application->setDocumentPath(container + "/Documents");
        application->setLibraryPath(container + "/Library");
        application->setInstallDate(Date(400000000.0 + index));
        application->setDocumentsDirSize(index * 1.5);
        application->setDocumentsDirSizeUnit(2);
        applications.push_back(std::move(application));
    }
    session->setApplications(std::move(applications));
    return session;
}

// The session's data as a plain property list.
PlistValue sessionAsPlist(BackupSession& session) {
    PlistValue::Array applications;
    for (const auto& application : *session.applications()) {
        PlistValue::Dictionary fields;
        fields.emplace("name", application->name());
        fields.emplace("displayName", *application->displayNameField());
        fields.emplace("bundleIdentifier", *application->bundleIdentifier());
        fields.emplace("homePath", *application->homePath());
        fields.emplace("documentPath", *application->documentPath());
        fields.emplace("libraryPath", *application->libraryPath());
        fields.emplace("installDate", *application->installDate());
        fields.emplace("documentsDirSize", application->documentsDirSize());
        applications.emplace_back(std::move(fields));
    }
    PlistValue::Dictionary preferences;
    for (const auto& [path, contents] : *session.preferencesData()) {
        preferences.emplace(path, contents.isNull() ? PlistValue::data("") : contents);
    }
    return PlistValue::Dictionary{{"rawData", *session.rawData()},
                                  {"preferencesData", std::move(preferences)},
                                  {"applications", std::move(applications)},
                                  {"sessionDate", *session.sessionDate()}};
}

class HistoryTextFixture : public benchmark::Fixture {
public:
    void SetUp(const benchmark::State&) override {
        static const test::DetachedDevice device;
        session_ = largeSession();
    }
    void TearDown(const benchmark::State&) override { session_.reset(); }

protected:
    std::shared_ptr<BackupSession> session_;
};

BENCHMARK_DEFINE_F(HistoryTextFixture, encodeHistoryText)(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(HistoryText::encode(session_));
}

BENCHMARK_DEFINE_F(HistoryTextFixture, decodeHistoryText)(benchmark::State& state) {
    const std::string text = *HistoryText::encode(session_);
    state.counters["text bytes"] = static_cast<double>(text.size());
    for (auto _ : state) benchmark::DoNotOptimize(HistoryText::decode(text, modelClasses()));
}

BENCHMARK_DEFINE_F(HistoryTextFixture, historyTextRoundTrip)(benchmark::State& state) {
    for (auto _ : state) {
        const auto text = HistoryText::encode(session_);
        benchmark::DoNotOptimize(HistoryText::decode(*text, modelClasses()));
    }
}

BENCHMARK_DEFINE_F(HistoryTextFixture, plainPropertyListRoundTrip)(benchmark::State& state) {
    const PlistValue plist = sessionAsPlist(*session_);
    for (auto _ : state) {
        const std::string text = Base64::encode(Zlib::deflate(*PlistCodec::serialize(plist, PlistFormat::Binary)));
        const auto bytes = Zlib::inflate(*Base64::decode(text), PlistCodec::kMaximumSize);
        benchmark::DoNotOptimize(PlistCodec::parse(*bytes));
    }
}

BENCHMARK_REGISTER_F(HistoryTextFixture, encodeHistoryText)->Unit(benchmark::kMillisecond);
BENCHMARK_REGISTER_F(HistoryTextFixture, decodeHistoryText)->Unit(benchmark::kMillisecond);
BENCHMARK_REGISTER_F(HistoryTextFixture, historyTextRoundTrip)->Unit(benchmark::kMillisecond);
BENCHMARK_REGISTER_F(HistoryTextFixture, plainPropertyListRoundTrip)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace stowhaven
