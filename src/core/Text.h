#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// Small text operations, with the meanings the device's string class gives them.
namespace textutil {

// Without white space and newlines at either end.
std::string trimmed(std::string_view text);

// The pieces between the separators, empty ones included: "a,,b" gives "a", "", "b".
std::vector<std::string> split(std::string_view text, char separator);
// The pieces with SEPARATOR between them.
std::string joined(const std::vector<std::string>& pieces, std::string_view separator);

// ASCII letters in lower case, every other byte as it is.
std::string lowered(std::string_view text);
std::string uppered(std::string_view text);
// The first byte in upper case and the rest in lower case: "Notes" for "NOTES".
std::string firstLetterUppered(std::string_view text);

// Letters compared without regard to case; other characters by their code.
std::weak_ordering caseInsensitiveOrder(std::string_view left, std::string_view right);
bool containsCaseInsensitive(std::string_view text, std::string_view part);

// Every occurrence of FROM replaced, left to right.
std::string replacingAll(std::string text, std::string_view from, std::string_view to);

// The first letter of each word in upper case and every other letter in lower case; a
// word starts after anything that is not a letter or a digit: "Repo.Example.Org".
std::string capitalized(std::string text);

// Every byte but the unreserved characters of RFC 3986 (letters, digits, - . _ ~) as %XX.
std::string percentEncoded(std::string_view text);
// TEXT with each %XX as its byte, and in a form's query (FORM) each "+" as a space; none
// when a "%" starts no two hexadecimal digits.
std::optional<std::string> percentDecoded(std::string_view text, bool form = false);
// The value of a hexadecimal digit, -1 for any other character.
int hexDigitValue(char digit);

// The text with & < > " ' as HTML's character references, to stand in an HTML page.
std::string htmlEscaped(std::string_view text);

// A number as the device's decimal style writes it in English: "1,234.568", at most three
// decimals, no trailing zeros.
std::string decimalText(double value);

// A nil value prints as "(null)".
std::string orNull(const std::optional<std::string>& value);

}  // namespace textutil

}  // namespace stowhaven
