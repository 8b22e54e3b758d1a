#pragma once
// The classic number conversions.

#include <QString>
#include <cstdint>
#include <optional>

namespace toolkit {

/// The leading number of the text (blanks inside and before are skipped, sign, decimal point and exponent are
/// understood, and "&H1F", "&O17"); 0 when there is none, infinity when it is too large. Never fails.
double Val(const QString& text);

/// To a 16-bit integer, halves to the even neighbour. Nothing on overflow or NaN.
std::optional<std::int16_t> CInt(double value);
/// To a 32-bit integer, halves to the even neighbour. Nothing on overflow or NaN.
std::optional<std::int32_t> CLng(double value);

/// To the nearest whole number, a half upwards, as Format(value, "0") rounds. The nearest there is on
/// overflow, 0 for NaN.
std::int64_t RoundHalfUp(double value);

/// A number as decimal text of up to 15 digits; whole numbers print without a decimal point.
QString Str(double value);

/// The general date-and-time form of a Swedish system, local time: "1999-04-06 14:23:10".
QString GeneralDate(std::int64_t seconds_since_1970);

}  // namespace toolkit
