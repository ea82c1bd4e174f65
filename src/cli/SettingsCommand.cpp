#include "cli/SettingsCommand.h"

#include "cli/SettingInput.h"
#include "cli/SettingOutput.h"
#include "core/SettingsKeys.h"
#include "platform/UserDefaults.h"

#include <fmt/format.h>
#include <fmt/ostream.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <vector>

namespace stowhaven {

void SettingsCommand::add(CLI::App& app) {
    command_ = app.add_subcommand(
        "settings", "List the settings, print one (KEY), set one (KEY VALUE) or remove one (--unset KEY)");
    command_->add_option("key", request_.key, "A setting's key, such as CurrentStorageType");
    command_->add_option(
        "value", request_.value,
        "The new value, of the key's kind; a list is a JSON array of strings, such as '[\"a\",\"b\"]'");
    command_->add_flag("--unset", request_.unset,
                       "Remove the setting: its registered default counts again, and a default list is absent (all "
                       "selected)");
    command_->add_flag("--json", request_.asJson, "In JSON");
    command_->add_flag("--show-secrets", request_.showSecrets, "Show passwords, tokens and keys unmasked");
}

namespace {

struct Entry {
    const SettingKey* key;
    PlistValue value;  // masked where asked
    bool isDefault;
};

Entry entryOf(const SettingKey& key, const PreferenceStore& defaults, bool showSecrets) {
    const PlistValue value = defaults.object(key.name);
    return {&key, key.secret && !showSecrets ? SettingOutput::masked(value) : value,
            key.isRegistered() && value == key.defaultValue};
}

nlohmann::json toJson(const Entry& entry) {
    return {{"key", entry.key->name},
            {"kind", nameOf(entry.key->kind)},
            {"value", SettingOutput::json(entry.value)},
            {"default", entry.isDefault}};
}

void printList(const std::vector<Entry>& entries, bool asJson, std::ostream& out) {
    if (asJson) {
        nlohmann::json list = nlohmann::json::array();
        for (const Entry& entry : entries) list.push_back(toJson(entry));
        out << list.dump(2) << '\n';
        return;
    }
    std::size_t keyWidth = 0;
    for (const Entry& entry : entries) keyWidth = std::max(keyWidth, entry.key->name.size());
    for (const Entry& entry : entries) {
        fmt::print(out, "{:<{}}  {}{}\n", entry.key->name, keyWidth, SettingOutput::text(entry.value),
                   entry.isDefault ? "  (default)" : "");
    }
}

int list(const SettingsCommand::Request& request, std::ostream& out) {
    const PreferenceStore& defaults = UserDefaults::standard();
    std::vector<Entry> entries;
    for (const SettingKey& key : SettingsKeys::all()) {
        if (defaults.keyExists(key.name)) entries.push_back(entryOf(key, defaults, request.showSecrets));
    }
    printList(entries, request.asJson, out);
    return 0;
}

int print(const SettingKey& key, const SettingsCommand::Request& request, std::ostream& out, std::ostream& errors) {
    const PreferenceStore& defaults = UserDefaults::standard();
    if (!defaults.keyExists(key.name)) {
        fmt::print(errors, "stowhaven: {} is not set\n", key.name);
        return 1;
    }
    const Entry entry = entryOf(key, defaults, request.showSecrets);
    if (request.asJson) {
        out << toJson(entry).dump(2) << '\n';
    } else {
        out << SettingOutput::text(entry.value) << '\n';
    }
    return 0;
}

// A null value removes the key.
int store(const SettingKey& key, PlistValue value, std::ostream& errors) {
    if (!UserDefaults::standard().set(key.name, std::move(value))) {
        fmt::print(errors, "stowhaven: the settings couldn't be written to <{}>\n",
                   UserDefaults::pathForUser("mobile"));
        return 1;
    }
    return 0;
}

}  // namespace

int SettingsCommand::run(const Request& request, std::ostream& out, std::ostream& errors) {
    if (!request.key) {
        if (!request.unset) return list(request, out);
        fmt::print(errors, "stowhaven: --unset needs the key to remove\n");
        return 2;
    }
    const SettingKey* key = SettingsKeys::find(*request.key);
    if (key == nullptr) {
        fmt::print(errors, "stowhaven: {} is no setting of the program (\"stowhaven settings\" lists them)\n",
                   *request.key);
        return 2;
    }
    if (request.unset) {
        if (request.value) {
            fmt::print(errors, "stowhaven: --unset takes a key and no value\n");
            return 2;
        }
        return store(*key, PlistValue(), errors);
    }
    if (!request.value) return print(*key, request, out, errors);
    std::string problem;
    auto value = SettingInput::parse(*key, *request.value, problem);
    if (!value) {
        fmt::print(errors, "stowhaven: {}: {}\n", key->name, problem);
        return 2;
    }
    return store(*key, std::move(*value), errors);
}

}  // namespace stowhaven
