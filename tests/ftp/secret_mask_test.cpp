#include "ftp/secret_mask.h"

#include <gtest/gtest.h>

namespace ftp {
namespace {

struct MaskRow {
    const char* line;
    const char* shown;
};

TEST(SecretMask, TakesThePlaceOfSecrets) {
    SecretMask mask;
    mask.Set("anna", {"hemligt", "konto 7"});
    const MaskRow rows[] = {
        {"", ""},
        {"331 Password required for anna.", "331 Password required for anna."},
        {"530 hemligt is wrong", "530 **** is wrong"},
        {"530-hemligthemligt", "530-********"},
        {"hemligt", "****"},
        {"230 Account konto 7, password hemligt", "230 Account ****, password ****"},
        {"230 Hemligt, hemlig", "230 Hemligt, hemlig"},
        {"530 hhemligt", "530 h****"},
    };
    for (const MaskRow& row : rows) {
        EXPECT_EQ(mask.Reply(row.line), row.shown);
        EXPECT_EQ(mask.Words(row.line), row.shown);
    }
    mask.Clear();
    EXPECT_EQ(mask.Reply("530 hemligt"), "530 hemligt");
}

TEST(SecretMask, FindsASecretInEveryEncoding) {
    SecretMask mask;
    mask.Set("", {"l\xC3\xB6sen\xE2\x82\xAC"});
    EXPECT_EQ(mask.Words("530 l\xC3\xB6sen\xE2\x82\xAC"), "530 ****");
    EXPECT_EQ(mask.Words("530 l\xF6sen\x80"), "530 ****");
    EXPECT_EQ(mask.Words("530 \xE5 l\xC3\xB6sen\xE2\x82\xAC"), "530 \xE5 ****") << "both in one line";
}

TEST(SecretMask, TakesTheLongerSecretWhole) {
    for (const auto& [password, account] : {std::pair{"ab", "abc"}, std::pair{"abc", "ab"}}) {
        SecretMask mask;
        mask.Set("", {password, account});
        EXPECT_EQ(mask.Words("abc ab"), "**** ****");
    }
}

TEST(SecretMask, HidesNothingThatIsNoSecret) {
    SecretMask mask;
    mask.Set("demo", {"demo", ""});
    EXPECT_EQ(mask.Reply("230 demo"), "230 demo");
    mask.Set("demo", {"hemligt"});
    mask.Set("demo", {});
    EXPECT_EQ(mask.Reply("230 hemligt"), "230 hemligt") << "of another session";
}

TEST(SecretMask, KeepsCodesAndVerbs) {
    SecretMask mask;
    mask.Set("", {"2", "CWD", "*"});
    EXPECT_EQ(mask.Reply("220 2"), "220 ****");
    EXPECT_EQ(mask.Reply("2"), "****") << "no code";
    EXPECT_EQ(mask.Reply("2201"), "********01") << "no code";
    EXPECT_EQ(mask.Reply("222"), "222");
    EXPECT_EQ(mask.Command(""), "");
    EXPECT_EQ(mask.Command("CWD CWD"), "CWD ****");
    EXPECT_EQ(mask.Command("CWD"), "CWD");
    EXPECT_EQ(mask.Command("RETR 2.txt"), "RETR ****.txt");
    EXPECT_EQ(mask.Command("PASS ****"), "PASS ****");
    EXPECT_EQ(mask.Command("ACCT ****"), "ACCT ****");
    mask.Set("", {"220 a"});
    EXPECT_EQ(mask.Reply("220 a"), "220 ****") << "begins in the code";
    EXPECT_EQ(mask.Words("220 a"), "****");
    mask.Set("", {"0 x"});
    EXPECT_EQ(mask.Reply("550 x"), "550 ****");
    EXPECT_EQ(mask.Reply("550-x 0 x"), "550-x ****");
    EXPECT_EQ(mask.Command("A0 xy"), "A0 ****y");
    mask.Set("", {"0 "});
    EXPECT_EQ(mask.Reply("550 x"), "550 x");
}

TEST(SecretMask, EndsWhateverTheSecretIs) {
    SecretMask mask;
    mask.Set("", {"\xEF\xBB\xBF"});
    EXPECT_EQ(mask.Words("530 \xEF\xBB\xBF, x"), "530 ****, x");
    mask.Set("", {"\xFF", "\xC2\x81"});
    EXPECT_EQ(mask.Words("\xFF \xC2\x81 x"), "**** **** x");
}

}  // namespace
}  // namespace ftp
