#include "ftp/engine/wire/local_name.h"

#include <gtest/gtest.h>

#include <string>

namespace ftp {
namespace {

using namespace std::string_literals;

TEST(PlainName, IsWhatCanStandInAFolder) {
    for (const std::string& name : {"index.htm"s,
                                    "a"s,
                                    "..a"s,
                                    ".htaccess"s,
                                    "a..b"s,
                                    " a"s,
                                    "min sida.htm"s,
                                    "-rf"s,
                                    "~"s,
                                    "b\xC3\xA5t"s,
                                    "b\xE5t"s,
                                    "10:30"s,
                                    "ab:"s,
                                    "ab:c"s,
                                    ":"s,
                                    "1:a"s,
                                    "con"s,
                                    "nul.txt"s,
                                    "\xEF\x80\xBA"s,
                                    "a\xEF\x84\x80"s,
                                    "a\xE2\x80\xAEtxt"s,
                                    "a'\"$(x)`;|&*?<>"s,
                                    std::string(255, 'x')}) {
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
                                    "a:b"s,
                                    "C:\\x"s,
                                    "C:evil"s,
                                    "..."s,
                                    "a."s,
                                    "a.."s,
                                    " "s,
                                    "a "s,
                                    "a. "s,
                                    "a\\..\\..\\b"s,
                                    "\xEF\x81\x9C"s,
                                    "a\xEF\x82\x80"s,
                                    "\xEF\x83\x83\xEF\x82\xA4"s,
                                    "\xEF\x83\xBF"
                                    "b"s,
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
