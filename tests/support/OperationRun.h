#pragma once

#include "platform/dispatch/Operation.h"

#include <memory>

namespace stowhaven {

// Runs a job's operation on a serial queue of its own, as the screens do, while this thread
// serves the main queue; returns once the operation has finished and what it left on the
// main queue has run.
void runOperation(std::shared_ptr<Operation> operation);

}  // namespace stowhaven
