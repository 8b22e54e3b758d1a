#include "toolkit/conversions.h"

#include <QDateTime>
#include <QLocale>
#include <charconv>
#include <cmath>
#include <limits>

namespace toolkit {
namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// "&H1F" and "&O17"; the number in these is never negative and never overflows.
double ValOfBase(const char* first, const char* last, int base) {
    double value = 0;
    for (; first != last; ++first) {
        unsigned digit = 0;
        if (std::from_chars(first, first + 1, digit, base).ec != std::errc()) break;
        value = value * base + digit;
    }
    return value;
}

template <typename Integer>
std::optional<Integer> ToEven(double value) {
    const double rounded =
        std::nearbyint(value);  // halves to the even neighbour, the mode a program starts in
    using Limits = std::numeric_limits<Integer>;
    if (!(rounded >= Limits::min() && rounded <= Limits::max())) return std::nullopt;
    return static_cast<Integer>(rounded);
}

}  // namespace

double Val(const QString& text) {
    QByteArray bytes = text.toLatin1();
    bytes.removeIf(IsBlank);
    const char* first = bytes.constBegin();
    const char* const last = bytes.constEnd();

    const QByteArray mark = bytes.left(2).toUpper();
    if (mark == "&H" || mark == "&O") return ValOfBase(first + 2, last, mark == "&H" ? 16 : 8);

    if (first != last && *first == '+') ++first;
    // from_chars would take "inf" and "nan" too.
    const char* digits = first != last && *first == '-' && first == bytes.constBegin() ? first + 1 : first;
    if (digits != last && *digits == '.') ++digits;
    if (digits == last || !IsDigit(*digits)) return 0;

    double value = 0;
    const auto [end, error] = std::from_chars(first, last, value);
    if (error == std::errc()) return value;
    // Too large is infinity and too small is zero, which from_chars does not tell apart.
    return QLocale::c().toDouble(QString::fromLatin1(first, end - first));
}

std::optional<std::int16_t> CInt(double value) {
    return ToEven<std::int16_t>(value);
}

std::optional<std::int32_t> CLng(double value) {
    return ToEven<std::int32_t>(value);
}

std::int64_t RoundHalfUp(double value) {
    constexpr double kTooLarge = 9223372036854775808.0;
    if (std::isnan(value)) return 0;
    const double below = std::floor(value);
    const double rounded = value - below >= 0.5 ? below + 1 : below;
    if (rounded >= kTooLarge) return std::numeric_limits<std::int64_t>::max();
    if (rounded < -kTooLarge) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(rounded);
}

QString Str(double value) {
    constexpr double kLargestWritten = 1e18;
    const bool whole = value == std::trunc(value) && std::abs(value) < kLargestWritten;
    if (whole) return QString::number(static_cast<qint64>(value));
    return QString::number(value, 'g', 15);
}

QString GeneralDate(std::int64_t seconds_since_1970) {
    return QDateTime::fromSecsSinceEpoch(seconds_since_1970).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

}  // namespace toolkit
