#pragma once

#include "core/DataSetSizes.h"

#include <map>
#include <string>

namespace stowhaven::test {

// Data sets named as their has-flags without "has" and "Data": "Calendar", "Chat",
// "Health", "Phone", "Videos", "Contacts", "Notes", "Maps", "Photos", "Safari".
class FakeDataSets final : public DataSetSizes {
public:
    // A set that is there to take, or with PRESENT false one whose flag is off.
    FakeDataSets& with(const std::string& name, double size, bool present = true) {
        sets_[name] = {present, size};
        return *this;
    }
    FakeDataSets& withBackupTotalSize(double size) {
        total_ = size;
        return *this;
    }

    bool hasCalendarData() const override { return has("Calendar"); }
    double calendarDataSize() const override { return size("Calendar"); }
    bool hasChatData() const override { return has("Chat"); }
    double chatDataSize() const override { return size("Chat"); }
    bool hasHealthData() const override { return has("Health"); }
    double healthDataSize() const override { return size("Health"); }
    bool hasPhoneData() const override { return has("Phone"); }
    double phoneDataSize() const override { return size("Phone"); }
    bool hasVideosData() const override { return has("Videos"); }
    double videosDataSize() const override { return size("Videos"); }
    bool hasContactsData() const override { return has("Contacts"); }
    double contactsDataSize() const override { return size("Contacts"); }
    bool hasNotesData() const override { return has("Notes"); }
    double notesDataSize() const override { return size("Notes"); }
    bool hasMapsData() const override { return has("Maps"); }
    double mapsDataSize() const override { return size("Maps"); }
    bool hasPhotosData() const override { return has("Photos"); }
    double photosDataSize() const override { return size("Photos"); }
    bool hasSafariData() const override { return has("Safari"); }
    double safariDataSize() const override { return size("Safari"); }
    double backupTotalSize() const override { return total_; }

private:
    struct Set {
        bool present = false;
        double size = 0;
    };

    bool has(const std::string& name) const {
        const auto set = sets_.find(name);
        return set != sets_.end() && set->second.present;
    }
    double size(const std::string& name) const {
        const auto set = sets_.find(name);
        return set == sets_.end() ? 0 : set->second.size;
    }

    std::map<std::string, Set> sets_;
    double total_ = 0;
};

}  // namespace stowhaven::test
