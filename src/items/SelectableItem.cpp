#include "items/SelectableItem.h"

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/FileSizes.h"
#include "core/Text.h"

#include <fmt/format.h>

namespace stowhaven {

SelectableItem::SelectableItem(std::string name) : selected_(true), size_(kUnmeasuredSize), name_(std::move(name)) {}

SelectableItem::SelectableItem(KeyedUnarchiver& coder)
    : selected_(false), size_(coder.decodeDoubleForKey("size")), name_(coder.decodeStringForKey("name").value_or("")) {}

std::shared_ptr<Codable> SelectableItem::initWithCoder(KeyedUnarchiver& coder) {
    return std::make_shared<SelectableItem>(coder);
}

void SelectableItem::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObject(name_, "name");
    coder.encodeDouble(size_, "size");
}

std::string SelectableItem::description() const {
    const std::string className = classChain().front();
    if (size_ * FileSizes::kBytesPerMegabyte <= 1024) {
        return fmt::format("{} -> {} [{:d}] {{{:.0f}b}}", className, name_, isSelected(),
                           size_ * FileSizes::kBytesPerMegabyte);
    }
    return fmt::format("{} -> {} [{:d}] {{{:.3f}Mb}}", className, name_, isSelected(), size_);
}

std::weak_ordering SelectableItem::compare(const SelectableItem& other) const {
    return textutil::caseInsensitiveOrder(displayName(), other.displayName());
}

}  // namespace stowhaven
