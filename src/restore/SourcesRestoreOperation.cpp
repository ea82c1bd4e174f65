#include "restore/SourcesRestoreOperation.h"

#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/Supervisor.h"
#include "core/Text.h"
#include "items/DeviceItems.h"
#include "items/PreferenceFile.h"
#include "items/RepositorySource.h"
#include "platform/DeviceRoot.h"
#include "platform/FileManager.h"
#include "platform/FileOwnership.h"
#include "platform/Log.h"
#include "platform/Strings.h"
#include "platform/plist/PlistCodec.h"
#include "restore/AptSourceList.h"
#include "restore/RestoreCommands.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

namespace stowhaven {

namespace {

constexpr const char* kCydiaListPath = "/etc/apt/sources.list.d/cydia.list";
constexpr const char* kCydiaSourcesKey = "CydiaSources";

bool isControlCharacter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

bool holdsControlCharacter(const std::string& text) {
    return std::any_of(text.begin(), text.end(), isControlCharacter);
}

// Every text of the source that reaches either record. The package manager writes its apt
// list from its settings, so a control character there could break a line in two later.
bool isWritable(const RepositorySource& source) {
    return !holdsControlCharacter(source.debSourceAsString()) && !holdsControlCharacter(source.name()) &&
           !std::any_of(source.sections().begin(), source.sections().end(), holdsControlCharacter);
}

// The session's copy of the package manager's settings, as a dictionary.
std::optional<PlistValue::Dictionary> sessionCydiaPreferences(const BackupSession& session) {
    for (const auto& file : session.preferencesFileObjects()) {
        if (file->displayName() != DeviceItems::kCydiaPreferencesName || file->preferencePlistData().isNull()) continue;
        std::optional<PlistValue> value;
        if (const PlistValue::Data* bytes = file->preferencePlistData().asData()) {
            value = PlistCodec::parse(std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
        } else {
            value = file->preferencePlistData().plist();
        }
        if (value && value->isDictionary()) return *value->asDictionary();
        SH_LOG("Couldn't read the session's <{}>!", file->name());
        return std::nullopt;
    }
    return std::nullopt;
}

// The entry of the settings for a source named as a list line, "deb <link> <distribution>"
// or "<link> <distribution>": keyed like the package manager's own.
void addLineNamedSource(const std::string& name, PlistValue::Dictionary& cydiaSources) {
    const bool typed = name.starts_with("deb");
    const std::string key = textutil::replacingAll(typed ? name : "deb:" + name, " ", ":");
    if (cydiaSources.contains(key)) return;
    const std::vector<std::string> pieces = textutil::split(typed ? name : "deb " + name, ' ');
    cydiaSources.emplace(key,
                         PlistValue::Dictionary{{"Type", "deb"}, {"URI", pieces[1]}, {"Distribution", pieces.back()}});
}

// Adds the line to the apt list unless a line of it says the same.
void appendToList(const std::string& line) {
    const std::string path = DeviceRoot::path(kCydiaListPath);
    const std::string text = FileManager::contentsOfFile(path).value_or("");
    if (AptSourceList::holds(text, line)) {
        SH_LOG("<{}> already holds <{}>", path, line);
        return;
    }
    const auto ownership = FileOwnership::read(path);
    std::string error;
    if (!FileManager::writeFile(path, AptSourceList::withLine(text, line), &error,
                                ownership ? ownership->permissions : 0644)) {
        SH_LOG("Couldn't add <{}> to <{}>: {}", line, path, error);
        return;
    }
    if (ownership && !ownership->applyTo(path, &error)) SH_LOG("Couldn't give <{}> its owner back: {}", path, error);
}

void writePreferences(const std::string& path, const PlistValue::Dictionary& preferences) {
    const auto ownership = FileOwnership::read(path);
    if (!PlistCodec::writeFile(path, preferences, PlistFormat::Binary, ownership ? ownership->permissions : 0644)) {
        SH_LOG("Couldn't write <{}>!", path);
        return;
    }
    // Written anew by root: the package manager, which runs as the device's user, must
    // still be able to write it.
    std::string error;
    if (ownership && !ownership->applyTo(path, &error)) SH_LOG("Couldn't give <{}> its owner back: {}", path, error);
}

}  // namespace

void SourcesRestoreOperation::main() {
    DataRestoreOperation::main();
    setName("SourcesRestoreOperation");
    restore();
}

void SourcesRestoreOperation::restore() {
    const auto session = backupSession();
    const auto sources =
        session ? session->repositorySources().value_or(BackupSession::SourceList{}) : BackupSession::SourceList{};
    const auto count =
        std::count_if(sources.begin(), sources.end(), [](const auto& source) { return source->isSelected(); });
    if (count == 0) {
        SH_LOG("No source to restored!");
        return;
    }
    Supervisor& supervisor = Supervisor::shared();
    supervisor.notifyProgress(std::nullopt, Strings::localized("ADDING_USER_REPOS"));
    setTotalSteps(static_cast<double>(count + 1));

    const std::string preferencesPath = DeviceRoot::path(DeviceItems::kCydiaPreferencesPath);
    std::optional<PlistValue::Dictionary> preferences;
    if (const auto value = PlistCodec::readFile(preferencesPath); value && value->isDictionary()) {
        preferences = *value->asDictionary();
    } else {
        SH_LOG("Couldn't read <{}>: the sources go to the apt list only", preferencesPath);
    }
    PlistValue::Dictionary cydiaSources;
    if (preferences) {
        const PlistValue* present = valueForKey(*preferences, kCydiaSourcesKey);
        if (present && present->isDictionary()) cydiaSources = *present->asDictionary();
        if (const auto saved = sessionCydiaPreferences(*session)) {
            if (const PlistValue* savedSources = valueForKey(*saved, kCydiaSourcesKey)) {
                PlistValue sections = *savedSources;
                const PlistValue::Dictionary* sessionSections = session->cydiaSections().asDictionary();
                if (sessionSections && sections.asDictionary()) {
                    for (const auto& [name, value] : *sessionSections)
                        sections.asDictionary()->insert_or_assign(name, value);
                }
                // The key is the package manager's sections, whatever the value is.
                preferences->insert_or_assign("Sections", std::move(sections));
            }
        }
    }

    for (auto entry = cydiaSources.begin(); entry != cydiaSources.end();) {
        if (!entry->first.starts_with("http")) {
            ++entry;
            continue;
        }
        CydiaFileManager::shared().removeUserRepoSourcesNamed(entry->first);
        SH_LOG("Removed invalid source <{}>!", entry->first);
        entry = cydiaSources.erase(entry);
    }

    for (const auto& source : sources) restoreSource(source, cydiaSources);

    if (preferences) {
        preferences->insert_or_assign(kCydiaSourcesKey, std::move(cydiaSources));
        preferences->erase("LastUpdate");
        writePreferences(preferencesPath, *preferences);
    }
    supervisor.notifyProgress(std::nullopt, Strings::localized("UPDATING_USER_REPOS"));
    supervisor.systemExecute(RestoreCommands::kAptGetUpdate);
}

void SourcesRestoreOperation::restoreSource(const std::shared_ptr<RepositorySource>& source,
                                            PlistValue::Dictionary& cydiaSources) {
    const std::string line = source->debSourceAsString();
    if (source->isSelected() && !isWritable(*source)) {
        SH_LOG("Refusing repo <{}>: it holds a control character", line);
        advanceStep(std::nullopt);
        return;
    }
    if (!source->isSelected() || !CydiaFileManager::shared().addUserRepoSource(source)) {
        SH_LOG("Skipping repo: {}", source->description());
        advanceStep(std::nullopt);
        return;
    }
    advanceStep(fmt::format("{}: {}", Strings::localized("REPOSITORY_NAME"), source->name()));
    SH_LOG("Adding repo <{}>", source->name());

    if (textutil::split(source->name(), ' ').size() < 2) {
        PlistValue::Array sections(source->sections().begin(), source->sections().end());
        cydiaSources.insert_or_assign(source->metadataKey(),
                                      PlistValue::Dictionary{{"Type", source->type().value_or("Deb")},
                                                             {"URI", source->link().value_or("")},
                                                             {"Distribution", source->distribution().value_or("./")},
                                                             {"Sections", std::move(sections)}});
    } else {
        addLineNamedSource(source->name(), cydiaSources);
    }
    appendToList(line);
}

}  // namespace stowhaven
