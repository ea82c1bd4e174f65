#pragma once

#include "platform/services/Reachability.h"

namespace stowhaven {

// Reads the host's interfaces: connected when one that isn't a loopback is up and has an
// address; Wi-Fi when such an interface is a wireless one.
class HostReachability final : public Reachability {
public:
    bool isConnectedToNetwork() const override;
    bool usingWiFi() const override;
    void startNotifier() override {}
    void stopNotifier() override {}
};

}  // namespace stowhaven
