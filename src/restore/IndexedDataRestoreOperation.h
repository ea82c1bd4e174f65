#pragma once

#include "restore/DataRestoreOperation.h"

namespace stowhaven {

// The twelve kinds of indexed data of a session, in restore order: each kind's index is
// fetched, then its parts, which are joined and unpacked into the device. A kind the
// session or the user's choice leaves out is logged as skipped and still asked for; with
// no index on the storage it ends there.
class IndexedDataRestoreOperation final : public DataRestoreOperation {
public:
    void main() override;

private:
    void restoreDataIndex();
    void processDataIndexFile();
};

}  // namespace stowhaven
