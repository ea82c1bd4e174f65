#pragma once

#include <string>
#include <vector>

namespace stowhaven {

// One representation on the pasteboard: its type ("public.text", "public.url",
// "public.png") and its bytes.
struct PasteboardItem {
    std::string type;
    std::string bytes;
};

// The general pasteboard, which other applications paste from.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;
    // Puts ITEMS in place of what the pasteboard held.
    virtual void setItems(const std::vector<PasteboardItem>& items) = 0;
};

}  // namespace stowhaven
