#include "flows/SelectionKind.h"

namespace stowhaven {

std::string_view selectionKindName(SelectionKind kind) {
    switch (kind) {
        case SelectionKind::Applications:
            return "applications";
        case SelectionKind::StockApps:
            return "stock-apps";
        case SelectionKind::Packages:
            return "packages";
        case SelectionKind::Sources:
            return "sources";
        case SelectionKind::Preferences:
            return "preferences";
        case SelectionKind::Springboard:
            return "springboard";
        case SelectionKind::Folders:
            return "folders";
    }
    return "";
}

std::optional<SelectionKind> selectionKindNamed(std::string_view name) {
    for (const SelectionKind kind : kSelectionKinds) {
        if (selectionKindName(kind) == name) return kind;
    }
    return std::nullopt;
}

std::vector<SelectionKind> selectionKindsOf(FlowScreen screen) {
    switch (screen) {
        case FlowScreen::AppStoreSelection:
            return {SelectionKind::Applications, SelectionKind::StockApps};
        case FlowScreen::PackageSelection:
            return {SelectionKind::Packages, SelectionKind::Sources};
        case FlowScreen::FilesSelection:
            return {SelectionKind::Preferences, SelectionKind::Springboard};
        case FlowScreen::OtherSelection:
            return {SelectionKind::Folders};
        default:
            return {};
    }
}

}  // namespace stowhaven
