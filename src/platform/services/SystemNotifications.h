#pragma once

#include <string>

namespace stowhaven {

// System-wide notifications between processes of the device (the device's notify_post).
class SystemNotifications {
public:
    virtual ~SystemNotifications() = default;
    virtual void post(const std::string& name) = 0;
};

// No other process of a host listens; the post is logged.
class HostSystemNotifications final : public SystemNotifications {
public:
    void post(const std::string& name) override;
};

}  // namespace stowhaven
