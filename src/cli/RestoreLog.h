#pragma once

#include "core/CydiaFileManager.h"

#include <optional>
#include <ostream>
#include <string>

namespace stowhaven {

// The log of a restore: a line per package of the session that went through an install,
// with its mark; then, when asked, the install log of one package. Answers whether every
// package went in.
bool printRestoreLog(const CydiaFileManager::Packages& packages, const std::optional<std::string>& logOf,
                     std::ostream& out, std::ostream& errors);

}  // namespace stowhaven
