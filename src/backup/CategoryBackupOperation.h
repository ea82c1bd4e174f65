#pragma once

#include "backup/DataBackupOperation.h"
#include "core/DataSetSizes.h"

namespace stowhaven {

// A stock data set of the device (calendar, messages, notes...) archived from its folder,
// when the session takes it. A set the session leaves out leaves nothing behind: no
// folder, no index, not even the clean-up.
class CategoryBackupOperation : public DataBackupOperation {
public:
    void main() override;

protected:
    CategoryBackupOperation(std::string directoryName, StockDataSet set, std::string zipDir);

private:
    std::string kind_;
    StockDataSet set_;
    std::string folder_;
};

}  // namespace stowhaven
