#pragma once

namespace stowhaven {

// Whether the device's tools still run: a command line is started and leaves its mark. Once
// the program is leaving it starts none, and every check that runs a tool fails.
bool deviceToolsRun();

}  // namespace stowhaven
