#include "items/SelectableItem.h"

namespace stowhaven {

SelectableItem::SelectableItem(std::string name) : selected_(true), size_(kUnmeasuredSize), name_(std::move(name)) {}

}  // namespace stowhaven
