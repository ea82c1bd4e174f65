#include "platform/PreferenceStore.h"

#include "platform/AsciiCase.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/plist/PlistCodec.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace stowhaven {

namespace {

// Readable and writable by the owner only.
constexpr unsigned kFileMode = 0600;

template <typename T>
std::optional<T> copyOf(const T* value) {
    return value ? std::optional<T>(*value) : std::nullopt;
}

// A file made wider by someone else is narrowed before its secrets are read.
void tightenMode(const std::string& path) {
    const auto attributes = FileManager::attributesOfItem(path);
    if (!attributes || attributes->type != FileType::Regular || (attributes->permissions & 0077) == 0) return;
    std::error_code error;
    std::filesystem::permissions(path, std::filesystem::perms(kFileMode), error);
    if (error) {
        SH_LOG("Couldn't make <{}> private: {}", path, error.message());
    } else {
        SH_LOG("<{}> was readable by others; it is now {:o}", path, kFileMode);
    }
}

}  // namespace

PreferenceStore::PreferenceStore(std::string path) : path_(std::move(path)) { load(); }

void PreferenceStore::registerDefaults(const PlistValue::Dictionary& defaults) {
    std::lock_guard lock(mutex_);
    for (const auto& [key, value] : defaults) registered_.insert_or_assign(key, value);
}

PlistValue PreferenceStore::object(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const PlistValue* value = lookup(key);
    return value ? *value : PlistValue();
}

std::optional<std::string> PreferenceStore::string(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const PlistValue* value = lookup(key);
    return copyOf(value ? value->asString() : nullptr);
}

std::optional<PlistValue::Data> PreferenceStore::data(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const PlistValue* value = lookup(key);
    return copyOf(value ? value->asData() : nullptr);
}

std::optional<PlistValue> PreferenceStore::number(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const PlistValue* value = lookup(key);
    return copyOf(value && value->isNumber() ? value : nullptr);
}

std::optional<Date> PreferenceStore::date(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const PlistValue* value = lookup(key);
    return value ? value->asDate() : std::nullopt;
}

std::optional<PlistValue::Array> PreferenceStore::array(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const PlistValue* value = lookup(key);
    return copyOf(value ? value->asArray() : nullptr);
}

std::optional<PlistValue::Dictionary> PreferenceStore::dictionary(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const PlistValue* value = lookup(key);
    return copyOf(value ? value->asDictionary() : nullptr);
}

bool PreferenceStore::boolean(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const PlistValue* value = lookup(key);
    if (value == nullptr) return false;
    if (const auto number = value->numberAsReal()) return *number != 0;
    if (const auto* text = value->asString()) {
        return equalsIgnoringAsciiCase(*text, "YES") || equalsIgnoringAsciiCase(*text, "true") || *text == "1";
    }
    return false;
}

bool PreferenceStore::keyExists(std::string_view key) const {
    std::lock_guard lock(mutex_);
    return lookup(key) != nullptr;
}

PlistValue::Dictionary PreferenceStore::dictionaryRepresentation() const {
    std::lock_guard lock(mutex_);
    PlistValue::Dictionary representation = registered_;
    for (const auto& [key, value] : stored_) representation.insert_or_assign(key, value);
    return representation;
}

bool PreferenceStore::set(std::string_view key, PlistValue value) {
    if (value.isNull()) return remove(key);
    std::lock_guard lock(mutex_);
    PlistValue candidate(stored_);
    candidate.asDictionary()->insert_or_assign(std::string(key), std::move(value));
    const auto bytes = PlistCodec::serialize(candidate, PlistFormat::Binary);
    if (!bytes) {
        SH_LOG("Can't store <{}>: its value is no property-list value", key);
        return false;
    }
    stored_ = std::move(*candidate.asDictionary());
    unwritten_ = true;
    return write(*bytes);
}

bool PreferenceStore::remove(std::string_view key) {
    std::lock_guard lock(mutex_);
    const auto entry = stored_.find(key);
    if (entry == stored_.end()) return true;
    stored_.erase(entry);
    unwritten_ = true;
    return writeStored();
}

bool PreferenceStore::synchronize() {
    std::lock_guard lock(mutex_);
    return !unwritten_ || writeStored();
}

void PreferenceStore::reload() {
    std::lock_guard lock(mutex_);
    load();
}

const PlistValue* PreferenceStore::lookup(std::string_view key) const {
    if (const auto entry = stored_.find(key); entry != stored_.end()) return &entry->second;
    if (const auto entry = registered_.find(key); entry != registered_.end()) return &entry->second;
    return nullptr;
}

// A damaged file reads as empty and is left on disk as it is: nothing is written until a
// set() or remove() changes the settings, and that write replaces it. Until then the user
// or a support request can still look at it.
void PreferenceStore::load() {
    stored_.clear();
    unwritten_ = false;
    // A write that a kill cut short leaves its temporary file beside the settings, which
    // are whole: the old or the new.
    const std::filesystem::path settings(path_);
    FileManager::removeUnfinishedWrites(settings.parent_path().string(), [&settings](const std::string& target) {
        return target == settings.filename().string();
    });
    if (!FileManager::fileExists(path_)) return;
    tightenMode(path_);
    auto contents = PlistCodec::readFile(path_);
    if (!contents || !contents->isDictionary()) {
        SH_LOG("Settings in <{}> are damaged: reading them as empty until the next change", path_);
        return;
    }
    stored_ = std::move(*contents->asDictionary());
}

bool PreferenceStore::writeStored() {
    // Every change was checked to serialise before it was made.
    const auto bytes = PlistCodec::serialize(PlistValue(stored_), PlistFormat::Binary);
    return bytes && write(*bytes);
}

bool PreferenceStore::write(const std::string& bytes) {
    std::string error;
    const std::string folder = std::filesystem::path(path_).parent_path().string();
    if (!folder.empty() && !FileManager::fileExists(folder) && !FileManager::createDirectory(folder, true, &error)) {
        SH_LOG("{}", error);
        return false;
    }
    if (!FileManager::writeFile(path_, bytes, &error, kFileMode)) {
        SH_LOG("Settings not written: {}", error);
        return false;
    }
    unwritten_ = false;
    return true;
}

}  // namespace stowhaven
