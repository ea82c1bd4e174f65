#pragma once

#include <string>

namespace stowhaven {

// Something the user can tick in a list: a name, a size in megabytes and a selected flag.
class SelectableItem {
public:
    // The size an item has until it is measured: -2^63.
    static constexpr double kUnmeasuredSize = -9223372036854775808.0;

    // Named, selected and not measured yet.
    explicit SelectableItem(std::string name);
    virtual ~SelectableItem() = default;

    const std::string& name() const { return name_; }
    void setName(std::string name) { name_ = std::move(name); }
    double size() const { return size_; }
    void setSize(double size) { size_ = size; }
    bool isSelected() const { return selected_; }
    void setSelected(bool selected) { selected_ = selected; }

    virtual std::string displayName() const { return name_; }

private:
    bool selected_;
    double size_;
    std::string name_;
};

}  // namespace stowhaven
