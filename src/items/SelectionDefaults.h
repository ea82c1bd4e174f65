#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// A list of names selected by default, kept in the settings under one key. A list that
// isn't set is absent, which each class reads in its own way. Read on first use and again
// on reset(); safe to use from any thread.
class DefaultList {
public:
    explicit DefaultList(std::string key);

    void reset();
    // Every list reads its settings again when next used, as after a change of device.
    static void reloadAllOnNextUse();
    std::optional<std::vector<std::string>> names();
    // False also when the list is absent.
    bool contains(const std::string& name);

private:
    const std::string key_;
    std::mutex mutex_;
    // The round of reloadAllOnNextUse() in which the list was read; none before.
    std::optional<unsigned> loadedRound_;
    std::optional<std::vector<std::string>> names_;
};

// A class's two default lists, one per direction.
class SelectionDefaults {
public:
    SelectionDefaults(std::string backupKey, std::string restoreKey);

    void reset();
    DefaultList& side(bool backup) { return backup ? backup_ : restore_; }

private:
    DefaultList backup_;
    DefaultList restore_;
};

}  // namespace stowhaven
