#pragma once

#include "core/AlertPresenter.h"
#include "flows/SettingsRows.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {

// The settings screen's logic: the engine rows and their taps, the number of backups to
// keep, and what leaving the screen saves. Its questions go through the process's
// AlertPresenter and their answers come back by the alert's title. Made with create() and
// used on the main queue.
class SettingsViewController : public std::enable_shared_from_this<SettingsViewController> {
public:
    struct EngineRowState {
        const EngineRow* row;
        // The engine in force and logged in.
        bool highlighted;
    };

    enum class TapResult {
        Done,         // the rows show the change
        Asked,        // a question went up; its answer does the rest
        LoginNeeded,  // the engine wants a server and a login first
        Refused,      // the engine can't be used here, and said why
    };

    static std::shared_ptr<SettingsViewController> create();

    std::vector<EngineRowState> engineRows() const;
    TapResult tapEngineRow(std::size_t row);

    // Backups to keep on the current engine, 0 for all; the question that changes it.
    std::int32_t maximumBackupsToKeep() const;
    void askMaximumBackupsToKeep();

    void alertAnswered(const std::string& title, const AlertAnswer& answer);

    // Leaving the screen: the count and the engine are kept, and the main flow reloads.
    void saveChanges();
    // The engine changed, or its backups were erased, since the screen opened.
    bool storageChanged() const;

private:
    SettingsViewController();

    TapResult tapServerEngine(const EngineRow& row);
    TapResult tapLocalStorage();
    TapResult tapAddressBook();
    void ask(const std::string& titleKey, const std::string& message, const std::vector<std::string>& buttonKeys,
             Alert::Field field = Alert::Field::None);
    void takeMaximumBackupsToKeep(const std::optional<std::string>& text);
    void eraseLocalStorage();
    void deleteAddressBookEntries();

    StorageType typeAtOpening_;
    bool dataErased_ = false;
};

}  // namespace stowhaven
