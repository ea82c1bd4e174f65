#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace stowhaven {

struct CalendarEvent {
    std::string title;
    std::string notes;
    std::chrono::system_clock::time_point start;
    std::chrono::system_clock::time_point end;
};

// The device's calendar, where a finished job can be entered.
class CalendarStore {
public:
    virtual ~CalendarStore() = default;
    // Adds the event to the default calendar; answers an error text on failure.
    virtual std::optional<std::string> addEvent(const CalendarEvent& event) = 0;
};

}  // namespace stowhaven
