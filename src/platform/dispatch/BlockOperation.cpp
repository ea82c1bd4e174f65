#include "platform/dispatch/BlockOperation.h"

#include <utility>

namespace stowhaven {

BlockOperation::BlockOperation(Block block) : block_(std::move(block)) {}

void BlockOperation::main() {
    block_();
}

}  // namespace stowhaven
