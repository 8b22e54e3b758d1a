#pragma once
// Numbers as they stand in settings files that anybody may have edited. For the inside of settings/ only.

#include <QString>
#include <optional>

namespace settings {

/// The number that the text begins with, blanks skipped wherever they are, one sign allowed; the nearest of
/// `lowest` to `highest` where it is beyond them. Nothing when the text does not begin with a number.
std::optional<int> LeadingNumber(QString text, int lowest, int highest);

}  // namespace settings
