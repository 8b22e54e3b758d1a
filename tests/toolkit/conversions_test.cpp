#include "toolkit/conversions.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <clocale>
#include <cmath>
#include <limits>

namespace toolkit {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Val, ReadsTheLeadingNumber) {
    const std::pair<const char*, double> cases[] = {
        {"", 0},
        {"abc", 0},
        {"0", 0},
        {"48213 ", 48213},
        {"48213\t", 48213},
        {"  12 3abc", 123},
        {"1 234 KB", 1234},
        {"12 st", 12},
        {"1e3", 1000},
        {"1E+3", 1000},
        {"1 e 3", 1000},
        {"1e-2x", 0.01},
        {"1e", 1},
        {"1e+", 1},
        {"-.5", -0.5},
        {".5", 0.5},
        {"+7", 7},
        {"-7", -7},
        {"- 7", -7},
        {"+-7", 0},
        {"-+7", 0},
        {"--7", 0},
        {".", 0},
        {"-", 0},
        {"+", 0},
        {"-.", 0},
        {"5.", 5},
        {"1.2.3", 1.2},
        {"3,5", 3},
        {"00012", 12},
        {"&H10", 16},
        {"&hff", 255},
        {"& H 1 0", 16},
        {"&HXYZ", 0},
        {"&H", 0},
        {"&O17", 15},
        {"&o18", 1},
        {"&", 0},
        {"inf", 0},
        {"-inf", 0},
        {"nan", 0},
        {"0x10", 0},
        {"1d", 1},
        {"9007199254740993", 9007199254740992.0},
        {"99999999999999999999", 1e20},
        {"1e999", kInfinity},
        {"-1e999", -kInfinity},
        {"1e-999", 0},
        {"5 kilobyte \xC3\xA5\xC3\xA4\xC3\xB6", 5},
    };
    for (const auto& [text, value] : cases)
        EXPECT_EQ(Val(QString::fromUtf8(text)), value) << '"' << text << '"';
}

TEST(Val, ReadsNumbersOfAnyLength) {
    EXPECT_EQ(Val(QString(400, u'9')), kInfinity);
    EXPECT_EQ(Val(QStringLiteral("0.") + QString(400, u'0') + u'1'), 0);
    EXPECT_EQ(Val(QStringLiteral("&H") + QString(400, u'F')), kInfinity);
}

TEST(Val, DoesNotDependOnTheLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    std::setlocale(LC_NUMERIC, "sv_SE.UTF-8");  // has a decimal comma, where it is installed
    EXPECT_EQ(Val(QStringLiteral("2.5")), 2.5);
    EXPECT_EQ(Str(2.5), QStringLiteral("2.5"));
    std::setlocale(LC_NUMERIC, before.c_str());
}

TEST(CInt, RoundsHalvesToTheEvenNeighbour) {
    const std::pair<double, int> cases[] = {
        {0, 0},           {0.5, 0},           {1.5, 2},          {2.5, 2},       {12.5, 12},
        {13.5, 14},       {99.5, 100},        {-0.5, 0},         {-1.5, -2},     {-2.5, -2},
        {12.49, 12},      {12.51, 13},        {0.50000001, 1},   {32767, 32767}, {32767.4, 32767},
        {-32768, -32768}, {-32768.5, -32768}, {2.5000000001, 3},
    };
    for (const auto& [value, expected] : cases) EXPECT_EQ(CInt(value), expected) << value;
}

TEST(CInt, OverflowAndNaNGiveNothing) {
    for (double value : {32767.5, 32768.0, -32768.51, -32769.0, 1e300, kInfinity, -kInfinity, kNaN})
        EXPECT_EQ(CInt(value), std::nullopt) << value;
}

TEST(CLng, RoundsHalvesToTheEvenNeighbour) {
    const std::pair<double, std::int32_t> cases[] = {
        {0.5, 0},
        {1.5, 2},
        {320.5, 320},
        {2147483647, 2147483647},
        {2147483647.49, 2147483647},
        {-2147483648.0, std::numeric_limits<std::int32_t>::min()},
        {-2147483648.5, std::numeric_limits<std::int32_t>::min()},
    };
    for (const auto& [value, expected] : cases) EXPECT_EQ(CLng(value), expected) << value;
}

TEST(CLng, OverflowAndNaNGiveNothing) {
    for (double value : {2147483647.5, 2147483648.0, -2147483648.6, 1e300, kInfinity, kNaN})
        EXPECT_EQ(CLng(value), std::nullopt) << value;
}

TEST(RoundHalfUp, RoundsToTheNearest) {
    const std::pair<double, std::int64_t> cases[] = {
        {0, 0},
        {0.49, 0},
        {0.5, 1},
        {511 / 1024.0, 0},
        {512 / 1024.0, 1},
        {1.5, 2},
        {2.5, 3},
        {-0.5, 0},
        {-0.51, -1},
        {-1.5, -1},
        {320 / 3.2 / 60, 2},
        {320 / 3.2 + 1, 101},
        {0.49999999999999994, 0},
        {4503599627370497.5, 4503599627370498},
        {9007199254740993.0, 9007199254740992},
    };
    for (const auto& [value, expected] : cases) EXPECT_EQ(RoundHalfUp(value), expected) << value;
}

TEST(RoundHalfUp, StaysWithinItsRange) {
    EXPECT_EQ(RoundHalfUp(1e300), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(RoundHalfUp(9223372036854775808.0), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(RoundHalfUp(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(RoundHalfUp(-kInfinity), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(RoundHalfUp(kNaN), 0);
}

TEST(Str, WritesWholeNumbersWithoutAPoint) {
    const std::pair<double, const char*> cases[] = {
        {0, "0"},
        {-0.0, "0"},
        {5, "5"},
        {-5, "-5"},
        {0.5, "0.5"},
        {-0.25, "-0.25"},
        {0.1 + 0.2, "0.3"},
        {2147483648.0, "2147483648"},
        {1e15, "1000000000000000"},
        {9007199254740992.0, "9007199254740992"},
        {1e300, "1e+300"},
        {12.5, "12.5"},
    };
    for (const auto& [value, text] : cases) EXPECT_EQ(Str(value), QString::fromLatin1(text)) << value;
}

TEST(GeneralDate, IsTheSwedishForm) {
    const QDateTime time(QDate(1999, 4, 6), QTime(14, 23, 10));
    EXPECT_EQ(GeneralDate(time.toSecsSinceEpoch()), QStringLiteral("1999-04-06 14:23:10"));
    const QDateTime midnight(QDate(2024, 2, 29), QTime(0, 0));
    EXPECT_EQ(GeneralDate(midnight.toSecsSinceEpoch()), QStringLiteral("2024-02-29 00:00:00"));
}

}  // namespace
}  // namespace toolkit
