#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// Small text operations of the package catalogue, with the meanings the device's string
// class gives them.
namespace catalogue_text {

// Without white space and newlines at either end.
std::string trimmed(std::string_view text);

// The pieces between the separators, empty ones included: "a,,b" gives "a", "", "b".
std::vector<std::string> split(std::string_view text, char separator);

// Letters compared without regard to case; other characters by their code.
std::weak_ordering caseInsensitiveOrder(std::string_view left, std::string_view right);
bool containsCaseInsensitive(std::string_view text, std::string_view part);

// A nil value prints as "(null)".
std::string orNull(const std::optional<std::string>& value);

}  // namespace catalogue_text

}  // namespace stowhaven
