#pragma once

#include "platform/Date.h"

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {

class BackupSession;

// The calendar of backups: one month at a time, as weeks from Sunday, the days that have a
// session marked, in the device's time zone.
class BackupCalendar {
public:
    struct Day {
        // 0 for a cell before the month's first day or after its last.
        unsigned number = 0;
        bool hasSession = false;
    };
    using Week = std::array<Day, 7>;

    // Shows the month of the newest session, or the month of TODAY when there is none.
    BackupCalendar(std::vector<std::shared_ptr<BackupSession>> sessions, Date today);

    // "November 2026".
    std::string title() const;
    std::vector<Week> weeks() const;
    // The sessions of a day of the month shown, oldest first.
    std::vector<std::shared_ptr<BackupSession>> sessionsOn(unsigned day) const;

    void showNextMonth() { month_ += std::chrono::months(1); }
    void showPreviousMonth() { month_ -= std::chrono::months(1); }

private:
    struct Dated {
        std::chrono::year_month_day day;
        std::shared_ptr<BackupSession> session;
    };

    std::vector<Dated> sessions_;
    std::chrono::year_month month_;
};

}  // namespace stowhaven
