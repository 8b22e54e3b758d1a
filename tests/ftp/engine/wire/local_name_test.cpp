#include "ftp/engine/wire/local_name.h"

#include <gtest/gtest.h>

#include <string>

namespace ftp {
namespace {

using namespace std::string_literals;

TEST(PlainName, IsWhatCanStandInAFolder) {
    for (const std::string& name :
         {"index.htm"s, "a"s, "..."s, "..a"s, ".htaccess"s, "a..b"s, " "s, "min sida.htm"s, "-rf"s, "~"s,
          "b\xC3\xA5t"s, "b\xE5t"s, "10:30"s, "ab:"s, ":"s, "a'\"$(x)`;|&*?<>"s, std::string(255, 'x')}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(IsPlainName(name));
    }
}

TEST(PlainName, IsNothingThatLeadsElsewhere) {
    for (const std::string& name : {""s,
                                    "."s,
                                    ".."s,
                                    "/"s,
                                    "\\"s,
                                    "/etc/passwd"s,
                                    "../a"s,
                                    "..\\a"s,
                                    "a/b"s,
                                    "a\\b"s,
                                    "a/"s,
                                    "\\\\host\\a"s,
                                    "c:"s,
                                    "C:a"s,
                                    "z:\\a"s,
                                    "a\0b"s,
                                    "a\0"s,
                                    "a\nb"s,
                                    "a\r"s,
                                    "\x1B[2J"s,
                                    "\t"s,
                                    "a\x7F"s,
                                    std::string(256, 'x')}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(IsPlainName(name));
    }
}

}  // namespace
}  // namespace ftp
