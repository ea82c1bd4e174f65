#pragma once

#include "platform/DeviceRoot.h"

#include <stdexcept>
#include <string>

namespace stowhaven::test {

// Makes a folder the device root for the life of the object, then "/" again.
class DeviceRootScope {
public:
    explicit DeviceRootScope(const std::string& root) {
        if (!DeviceRoot::set(root)) throw std::invalid_argument("unusable device root " + root);
    }
    ~DeviceRootScope() { DeviceRoot::set("/"); }
    DeviceRootScope(const DeviceRootScope&) = delete;
    DeviceRootScope& operator=(const DeviceRootScope&) = delete;
};

}  // namespace stowhaven::test
