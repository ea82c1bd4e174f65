#pragma once

// Small model classes shaped like the system's session and application records, for the
// archive's tests, benchmark and fuzz targets.

#include "archive/ClassRegistry.h"
#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"

#include <fmt/format.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven::test {

class SampleApplication final : public Codable {
public:
    std::optional<std::string> name;
    std::optional<std::string> identifier;
    double size = 0;
    bool selected = false;
    std::optional<Date> lastUsed;

    std::vector<std::string> classChain() const override { return {"Application", "SelectableItem", "NSObject"}; }

    void encodeWithCoder(KeyedArchiver& coder) const override {
        coder.encodeObject(name, "name");
        coder.encodeObject(identifier, "identifier");
        coder.encodeDouble(size, "size");
        coder.encodeBool(selected, "selected");
        coder.encodeObject(lastUsed, "lastUsed");
    }

    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder) {
        auto application = std::make_shared<SampleApplication>();
        application->name = coder.decodeStringForKey("name");
        application->identifier = coder.decodeStringForKey("identifier");
        application->size = coder.decodeDoubleForKey("size");
        application->selected = coder.decodeBoolForKey("selected");
        application->lastUsed = coder.decodeDateForKey("lastUsed");
        return application;
    }
};

class SampleSession final : public Codable {
public:
    std::optional<std::string> version;
    std::optional<std::string> title;
    std::optional<std::string> encryptionKey;
    std::optional<Date> sessionDate;
    std::int64_t nbPackages = 0;
    bool hasCalendarData = false;
    double calendarDataSize = 0;
    std::optional<std::string> rawData;
    // Path to the file's bytes, or to nil where the file isn't held inline.
    ArchiveValue::Dictionary preferencesData;
    PlistValue cydiaSections;
    std::vector<std::shared_ptr<SampleApplication>> applications;
    // One of the applications again, to share a reference.
    std::shared_ptr<SampleApplication> favourite;

    std::vector<std::string> classChain() const override { return {"BackupSession", "NSObject"}; }

    void encodeWithCoder(KeyedArchiver& coder) const override {
        coder.encodeObject(version, "version");
        coder.encodeObject(title, "title");
        coder.encodeObject(encryptionKey, "encryptionKey");
        coder.encodeObject(sessionDate, "sessionDate");
        coder.encodeInt64(nbPackages, "nbPackages");
        coder.encodeBool(hasCalendarData, "fCalendar");
        coder.encodeDouble(calendarDataSize, "calendarDataSize");
        coder.encodeObject(rawData ? ArchiveValue::mutableString(*rawData) : ArchiveValue(), "rawData");
        coder.encodeObject(ArchiveValue::mutableDictionary(preferencesData), "preferencesData");
        coder.encodeObject(cydiaSections, "cydiaSections");
        coder.encodeObject(ArchiveValue::mutableArray(ArchiveValue::arrayOf(applications)), "applications");
        coder.encodeObject(favourite, "favourite");
    }

    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder) {
        auto session = std::make_shared<SampleSession>();
        session->version = coder.decodeStringForKey("version");
        session->title = coder.decodeStringForKey("title");
        session->encryptionKey = coder.decodeStringForKey("encryptionKey");
        session->sessionDate = coder.decodeDateForKey("sessionDate");
        session->nbPackages = coder.decodeInt64ForKey("nbPackages");
        session->hasCalendarData = coder.decodeBoolForKey("fCalendar");
        session->calendarDataSize = coder.decodeDoubleForKey("calendarDataSize");
        session->rawData = coder.decodeStringForKey("rawData");
        session->preferencesData = coder.decodeDictionaryForKey("preferencesData").value_or(ArchiveValue::Dictionary{});
        session->cydiaSections = coder.decodePropertyListForKey("cydiaSections").value_or(PlistValue());
        session->applications =
            coder.decodeArrayOfObjectsOfClass<SampleApplication>("applications").value_or(decltype(applications){});
        session->favourite = coder.decodeObjectOfClass<SampleApplication>("favourite");
        return session;
    }
};

inline ClassRegistry sampleClasses() {
    ClassRegistry classes;
    classes.registerClass("Application", SampleApplication::initWithCoder);
    classes.registerClass("BackupSession", SampleSession::initWithCoder);
    return classes;
}

// A session of the given size: stored package lines in rawData, preference files that
// are inline (every tenth) or left to the dated directory (nil), and applications.
inline std::shared_ptr<SampleSession> makeSampleSession(int packages, int preferenceFiles, int applications) {
    auto session = std::make_shared<SampleSession>();
    session->version = "8.1";
    session->title = "\xf0\x9f\x94\x92 Before the upgrade";
    session->sessionDate = Date(747763200.5);
    session->nbPackages = packages;
    session->hasCalendarData = true;
    session->calendarDataSize = 12.75;
    std::string rawData;
    for (int index = 0; index < packages; ++index) {
        rawData += fmt::format("Package {0}\tcom.example.package{0}\t1.{0}-1\tUtilities\tinstall ok installed\n", index);
    }
    session->rawData = std::move(rawData);
    for (int index = 0; index < preferenceFiles; ++index) {
        const std::string path = fmt::format("/var/mobile/Library/Preferences/com.example.tweak{}.plist", index);
        session->preferencesData[path] =
            index % 10 == 0 ? ArchiveValue(PlistValue::data(std::string(512, static_cast<char>(index)))) : ArchiveValue();
    }
    session->cydiaSections = PlistValue::Dictionary{{"Utilities", PlistValue::Dictionary{{"Hidden", false}}}};
    for (int index = 0; index < applications; ++index) {
        auto application = std::make_shared<SampleApplication>();
        application->name = fmt::format("Application {}", index);
        application->identifier = fmt::format("com.example.app{}", index);
        application->size = index * 1.5;
        application->selected = index % 2 == 0;
        application->lastUsed = Date(700000000.0 + index);
        session->applications.push_back(std::move(application));
    }
    if (!session->applications.empty()) session->favourite = session->applications.front();
    return session;
}

}  // namespace stowhaven::test
