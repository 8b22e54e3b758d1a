#include "ftp/engine/wire/directory.h"

#include <gtest/gtest.h>

namespace ftp {
namespace {

using Name = std::optional<std::string>;

Name Parsed(const std::string& line) {
    return ParseDirectory({std::stoi(line), {line}});
}

TEST(Directory, IsWhatStandsBetweenTheQuotationMarks) {
    EXPECT_EQ(Parsed("257 \"/\" is the current directory."), "/");
    EXPECT_EQ(Parsed("257 \"/webb/ny mapp\""), "/webb/ny mapp");
    EXPECT_EQ(Parsed("257 Here: \"/\xE5\" now"), "/\xE5");
}

TEST(Directory, IsNotGuessed) {
    for (const char* line :
         {"257 /webb", "257 \"/webb", "257 \"\"", "257 \"webb\"", "257 \"C:\\webb\"", "257 \"/a\"\"", "257",
          "250 \"/a\"", "257 \"/a\"b\" is it", "257 \"/a\"\"b\" is it", "257 \"/a\" is \"it\""})
        EXPECT_EQ(Parsed(line), std::nullopt) << line;
}

TEST(Below, JoinsWithOneSlash) {
    EXPECT_EQ(Below("/", "a.htm"), "/a.htm");
    EXPECT_EQ(Below("/webb", "a b.htm"), "/webb/a b.htm");
    EXPECT_EQ(Below("/webb/", "a.htm"), "/webb/a.htm");
    EXPECT_EQ(Below("/webb", "/abs.htm"), "/abs.htm");
}

}  // namespace
}  // namespace ftp
