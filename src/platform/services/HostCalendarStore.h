#pragma once

#include "platform/services/CalendarStore.h"

namespace stowhaven {

// Writes each event as an iCalendar file (.ics) into <var>/mobile/Library/Stowhaven/Calendar,
// where any calendar program can open it.
class HostCalendarStore final : public CalendarStore {
public:
    std::optional<std::string> addEvent(const CalendarEvent& event) override;

    // The iCalendar text of one event.
    static std::string iCalendarText(const CalendarEvent& event, const std::string& uid);
};

}  // namespace stowhaven
