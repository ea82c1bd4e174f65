#pragma once

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// The log of the last restore: a line per package of the session that went through an
// install, with its mark, and one per other failure of the restore's report; then, when
// asked, the install log of one package. Answers whether everything went in.
bool printRestoreLog(const std::optional<std::string>& logOf, std::ostream& out, std::ostream& errors);

}  // namespace stowhaven
