#pragma once

#include "platform/dispatch/Operation.h"

namespace stowhaven {

// An operation whose work is a block.
class BlockOperation final : public Operation {
public:
    explicit BlockOperation(Block block);

    void main() override;

private:
    Block block_;
};

}  // namespace stowhaven
