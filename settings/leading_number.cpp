#include "settings/leading_number.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace settings {

std::optional<int> LeadingNumber(QString text, int lowest, int highest) {
    const std::string digits = text.remove(u' ').toStdString();
    const bool negative = digits.starts_with('-');
    const char* const begin = digits.data() + (negative || digits.starts_with('+') ? 1 : 0);
    unsigned number = 0;  // takes no further sign
    const auto [end, error] = std::from_chars(begin, digits.data() + digits.size(), number);
    if (end == begin) {
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range) {
        return negative ? lowest : highest;
    }
    const long long value = negative ? -static_cast<long long>(number) : number;
    return static_cast<int>(std::clamp<long long>(value, lowest, highest));
}

}  // namespace settings
