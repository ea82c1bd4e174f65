#pragma once

#include "archive/ClassRegistry.h"

namespace stowhaven {

// The classes that session archives may hold: the session and the items it carries.
// Any other class name refuses an archive.
const ClassRegistry& modelClasses();

}  // namespace stowhaven
