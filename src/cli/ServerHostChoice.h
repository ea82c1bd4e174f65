#pragma once

#include "cli/ServerEngines.h"

#include <ostream>

namespace stowhaven {

class TerminalPrompt;

// The server to use for ENGINE, on the interactive storage menu: a saved host, or a new one
// asked for field by field. The host is proved and made current as `storage login` does;
// true when it now is, false (having said why) otherwise.
bool chooseServerHost(const ServerEngine& engine, TerminalPrompt& prompt, std::ostream& out);

}  // namespace stowhaven
