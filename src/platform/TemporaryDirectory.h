#pragma once

#include <string>

namespace stowhaven {

// The program's own temporary folder on the device: <var>/tmp/stowhaven, made on first
// use and readable by root only. It is never a shared folder, since the sweep of
// temporary files deletes broadly in it.
class TemporaryDirectory {
public:
    static std::string path();
};

}  // namespace stowhaven
