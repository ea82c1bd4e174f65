#pragma once

#include "archive/Codable.h"

#include <algorithm>
#include <compare>
#include <memory>
#include <string>
#include <vector>

namespace stowhaven {

class KeyedUnarchiver;

// Something the user can tick in a list: a name, a size in megabytes and a selected flag.
// Archived under "name" and "size"; an item read back from an archive is not selected.
class SelectableItem : public Codable {
public:
    // The size an item has until it is measured: -2^63.
    static constexpr double kUnmeasuredSize = -9223372036854775808.0;

    // Named, selected and not measured yet.
    explicit SelectableItem(std::string name);
    // The archived fields, not selected.
    explicit SelectableItem(KeyedUnarchiver& coder);
    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder);

    std::vector<std::string> classChain() const override { return {"SelectableItem", "NSObject"}; }
    void encodeWithCoder(KeyedArchiver& coder) const override;

    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    double size() const { return size_; }
    void setSize(double size) { size_ = size; }
    virtual bool isSelected() const { return selected_; }
    void setSelected(bool selected) { selected_ = selected; }

    virtual std::string displayName() const { return name_; }
    // "Class -> name [selected] {size}", the size in bytes up to 1 Kb, else in megabytes.
    virtual std::string description() const;
    // Case-insensitive order of the display names.
    std::weak_ordering compare(const SelectableItem& other) const;
    // Same name.
    bool isEqual(const SelectableItem& other) const { return name_ == other.name_; }

private:
    bool selected_;
    double size_;
    std::string name_;
};

// Sorts shared objects by their compare(), keeping the order of equals: items of any
// SelectableItem class, sessions by date.
template <typename Items>
void sortByCompare(Items& items) {
    std::stable_sort(items.begin(), items.end(), [](const auto& a, const auto& b) { return a->compare(*b) < 0; });
}

}  // namespace stowhaven
