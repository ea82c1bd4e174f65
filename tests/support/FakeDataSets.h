#pragma once

#include "core/DataSetSizes.h"

namespace stowhaven::test {

class FakeDataSets final : public DataSetSizes {
public:
    // A set that is there to take, or with PRESENT false one whose flag is off.
    FakeDataSets& with(StockDataSet set, double size, bool present = true) {
        sets_.setHas(set, present);
        sets_.setSize(set, size);
        return *this;
    }
    FakeDataSets& withBackupTotalSize(double size) {
        total_ = size;
        return *this;
    }

    bool hasData(StockDataSet set) const override { return sets_.has(set); }
    double dataSize(StockDataSet set) const override { return sets_.size(set); }
    double backupTotalSize() const override { return total_; }

private:
    StockDataSets sets_;
    double total_ = 0;
};

}  // namespace stowhaven::test
