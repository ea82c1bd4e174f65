#pragma once

namespace stowhaven {

// Whether the device can reach a network, and whether it does so over Wi-Fi.
class Reachability {
public:
    virtual ~Reachability() = default;
    virtual bool isConnectedToNetwork() const = 0;
    virtual bool usingWiFi() const = 0;
    virtual void startNotifier() = 0;
    virtual void stopNotifier() = 0;
};

}  // namespace stowhaven
