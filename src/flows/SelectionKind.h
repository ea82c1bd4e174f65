#pragma once

#include "flows/MainScreen.h"

#include <optional>
#include <string_view>
#include <vector>

namespace stowhaven {

// The lists a selection screen switches between.
enum class SelectionKind { Applications, StockApps, Packages, Sources, Preferences, Springboard, Folders };

inline constexpr SelectionKind kSelectionKinds[] = {
    SelectionKind::Packages,    SelectionKind::Sources,     SelectionKind::Applications, SelectionKind::StockApps,
    SelectionKind::Preferences, SelectionKind::Springboard, SelectionKind::Folders};

// "packages", "sources", "applications", "stock-apps", "preferences", "springboard",
// "folders": the kind's name on a command line.
std::string_view selectionKindName(SelectionKind kind);
std::optional<SelectionKind> selectionKindNamed(std::string_view name);

// The lists of a screen the main flow opens, the first one shown first.
std::vector<SelectionKind> selectionKindsOf(FlowScreen screen);

}  // namespace stowhaven
