#pragma once

#include <ostream>

namespace stowhaven {

class TerminalPrompt;

// The FTP server to use, on the interactive storage menu: a saved host, or a new one asked
// for field by field. The host is proved and made current as `storage login ftp` does;
// true when it now is, false (having said why) otherwise.
bool chooseFtpHost(TerminalPrompt& prompt, std::ostream& out);

}  // namespace stowhaven
