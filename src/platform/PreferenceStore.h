#pragma once

#include "platform/Date.h"
#include "platform/plist/PlistValue.h"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// The program's settings: one property-list file, as the device keeps the user defaults of
// an application. Stored values come first, then the registered defaults, which are never
// written. Every change is written at once, in binary, readable by its owner only, since
// the file holds passwords and tokens. Safe to use from any thread.
class PreferenceStore {
public:
    // Reads the file now, XML or binary. A missing file is an empty one.
    explicit PreferenceStore(std::string path);

    // Adds to the defaults registered before; a key registered again takes the new value.
    void registerDefaults(const PlistValue::Dictionary& defaults);

    // The stored value, else the registered one, else null.
    PlistValue object(std::string_view key) const;
    // Each answers nothing when the key is absent or holds another kind.
    std::optional<std::string> string(std::string_view key) const;
    std::optional<PlistValue::Data> data(std::string_view key) const;
    // A boolean, an integer or a real: the number objects of the device.
    std::optional<PlistValue> number(std::string_view key) const;
    std::optional<Date> date(std::string_view key) const;
    std::optional<PlistValue::Array> array(std::string_view key) const;
    std::optional<PlistValue::Dictionary> dictionary(std::string_view key) const;
    // As the device counts: a boolean itself, a number other than 0, or the text "YES",
    // "true" or "1" in any case; false for everything else and when absent.
    bool boolean(std::string_view key) const;

    // True if the key stands in dictionaryRepresentation(), registered defaults included.
    bool keyExists(std::string_view key) const;
    // The registered defaults overlaid with the stored values.
    PlistValue::Dictionary dictionaryRepresentation() const;

    // Stores and writes the file at once; storing null removes the key. A value that can't
    // be a property list is refused and changes nothing. When the file can't be written,
    // the value is kept for this run, false is answered and synchronize() tries again.
    bool set(std::string_view key, PlistValue value);
    bool remove(std::string_view key);
    // Writes what a failed write left unwritten; true when the file holds the settings.
    bool synchronize();
    // Reads the file again, for changes made by others; unwritten changes are dropped.
    void reload();

private:
    const PlistValue* lookup(std::string_view key) const;
    void load();
    bool writeStored();
    bool write(const std::string& bytes);

    const std::string path_;
    mutable std::mutex mutex_;
    PlistValue::Dictionary stored_;
    PlistValue::Dictionary registered_;
    bool unwritten_ = false;
};

}  // namespace stowhaven
