#pragma once

#include "platform/Date.h"

#include <chrono>

namespace stowhaven {

// The time of day, the one place the system reads it.
class Clock {
public:
    virtual ~Clock() = default;
    virtual std::chrono::system_clock::time_point now() const = 0;
    // The same moment as the system's date type.
    Date date() const { return Date::dateWithTimePoint(now()); }
};

class HostClock final : public Clock {
public:
    std::chrono::system_clock::time_point now() const override { return std::chrono::system_clock::now(); }
};

}  // namespace stowhaven
