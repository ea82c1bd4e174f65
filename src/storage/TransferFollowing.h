#pragma once

#include "net/Transfer.h"
#include "storage/TransferDisplay.h"

#include <cstdint>
#include <string>

namespace stowhaven {

// Follows a running upload or download of a network engine to its end: its progress on the
// job's bar and banner, and a cancel of the job ending it. False, with ERROR ("Canceled" or
// the transfer's own), when it didn't succeed.
bool followTransfer(Transfer& transfer, TransferDisplay::Direction direction, std::int64_t size, std::string& error);

}  // namespace stowhaven
