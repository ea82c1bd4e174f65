#pragma once

#include "platform/Date.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// Writes dates as text and reads them back, in the device's current time zone, by a
// pattern in the notation of the device's date formats: "yyyy", "MM", "dd", "HH", "mm"
// and "ss" stand for the fields, every other character for itself. Fractions of a second
// are dropped on the way out.
class DateFormatter {
public:
    explicit DateFormatter(std::string_view pattern);

    // Empty for a date that no calendar year can name.
    std::string stringFromDate(Date date) const;
    // Nothing when the text doesn't follow the pattern to the letter or names no day of
    // the calendar.
    std::optional<Date> dateFromString(std::string_view text) const;

private:
    enum class Field { Year, Month, Day, Hour, Minute, Second };
    struct Piece {
        std::optional<Field> field;  // a literal when absent
        char literal = 0;
    };

    std::vector<Piece> pieces_;
};

}  // namespace stowhaven
