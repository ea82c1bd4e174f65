#pragma once

#include <string>
#include <string_view>

namespace stowhaven {

// Where the device's file system starts: "/" on the device itself, a directory laid out
// like a device anywhere else. Every device path of the system goes through here.
class DeviceRoot {
public:
    // Takes a directory; the path is made absolute and normal. Any folder will do: command
    // lines quote the paths that need it. Only a path that can't be made absolute is
    // refused (false), and the root stays as it was.
    static bool set(std::string_view root);
    static std::string get();
    static bool isDeviceItself();

    // "/var/mobile/x" -> "<root>/var/mobile/x"; unchanged when the root is "/".
    static std::string path(std::string_view devicePath);
    // The way back: "<root>/var/mobile/x" -> "/var/mobile/x"; a path outside the root is
    // answered unchanged.
    static std::string devicePathOf(std::string_view hostPath);

    // The device's "var" folder: "/" with "var" added as a path component, under the root.
    static std::string var();
};

}  // namespace stowhaven
