#include "settings/leading_number.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace settings {
namespace {

TEST(LeadingNumber, IsReadFromWhatAnybodyMayHaveWritten) {
    const std::pair<QString, std::optional<int>> rows[] = {
        {"0", 0},
        {"7", 7},
        {"-7", -7},
        {"+7", 7},
        {" - 1 2 ", -12},
        {"007x", 7},
        {"3.9", 3},
        {"-0", 0},
        {"100", 100},
        {"101", 100},
        {"-100", -100},
        {"-101", -100},
        {"2147483648", 100},
        {"4294967296", 100},
        {"99999999999999999999", 100},
        {"-2147483649", -100},
        {"-4294967296", -100},
        {"-99999999999999999999", -100},
        {"", {}},
        {" ", {}},
        {"x", {}},
        {"x3", {}},
        {"-", {}},
        {"+", {}},
        {"+-3", {}},
        {"--3", {}},
        {"-+3", {}},
        {"stopp!", {}},
        {"\u0663", {}},
        {"½", {}},
    };
    for (const auto& [text, number] : rows) {
        EXPECT_EQ(LeadingNumber(text, -100, 100), number) << text.toStdString();
    }
    EXPECT_EQ(LeadingNumber("-2147483648", std::numeric_limits<int>::min(), 0),
              std::numeric_limits<int>::min());
    EXPECT_EQ(LeadingNumber("2147483647", 0, std::numeric_limits<int>::max()),
              std::numeric_limits<int>::max());
}

}  // namespace
}  // namespace settings
