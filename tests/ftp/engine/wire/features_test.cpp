#include "ftp/engine/wire/features.h"

#include <gtest/gtest.h>

namespace ftp {
namespace {

struct Flags {
    bool utf8, size, epsv, rest_stream, mlst, auth_tls;
};

void ExpectFlags(const Features& features, const Flags& flags) {
    EXPECT_EQ(features.utf8, flags.utf8);
    EXPECT_EQ(features.size, flags.size);
    EXPECT_EQ(features.epsv, flags.epsv);
    EXPECT_EQ(features.rest_stream, flags.rest_stream);
    EXPECT_EQ(features.mlst, flags.mlst);
    EXPECT_EQ(features.auth_tls, flags.auth_tls);
}

TEST(Features, AreReadFromTheAnswersOfKnownServers) {
    struct Row {
        std::string name;
        Reply reply;
        Flags flags;
    };
    const Row rows[] = {
        {"vsftpd",
         {211,
          {"211-Features:", " AUTH TLS", " EPRT", " EPSV", " MDTM", " PASV", " PBSZ", " PROT", " REST STREAM",
           " SIZE", " TVFS", "211 End"}},
         {false, true, true, true, false, true}},
        {"vsftpd without TLS",
         {211,
          {"211-Features:", " EPRT", " EPSV", " MDTM", " PASV", " REST STREAM", " SIZE", " TVFS", "211 End"}},
         {false, true, true, true, false, false}},
        {"pure-ftpd",
         {211,
          {"211-Extensions supported:",
           " UTF8",
           " EPRT",
           " IDLE",
           " MDTM",
           " SIZE",
           " MFMT",
           " REST STREAM",
           " MLST type*;size*;sizd*;modify*;UNIX.mode*;UNIX.uid*;UNIX.gid*;unique*;",
           " MLSD",
           " PRET",
           " AUTH TLS",
           " PBSZ",
           " PROT",
           " TVFS",
           " ESTA",
           " PASV",
           " EPSV",
           " SPSV",
           " ESTP",
           "211 End."}},
         {true, true, true, true, true, true}},
        {"proftpd",
         {211,
          {"211-Features:", " AUTH TLS", " CCC", " CLNT", " EPRT", " EPSV", " HOST", " LANG en-US.UTF-8*",
           " MDTM", " MFF modify;UNIX.group;UNIX.mode;", " MLST modify*;perm*;size*;type*;", " PBSZ", " PROT",
           " REST STREAM", " SIZE", " SSCN", " TVFS", " UTF8", "211 End"}},
         {true, true, true, true, true, true}},
        {"IIS",
         {211,
          {"211-Extended features supported:", " LANG EN*", " UTF8", " AUTH TLS;TLS-C;SSL;TLS-P;", " PBSZ",
           " PROT C;P;", " CCC", " HOST", " SIZE", " MDTM", " REST STREAM", "211 END"}},
         {true, true, false, true, false, true}},
        {"code on every line",
         {211, {"211-Features:", "211-SIZE", "211-rest stream", "211-utf8", "211 End"}},
         {true, true, false, true, false, false}},
        {"no leading blank, any case, tabs",
         {211, {"211-Features:", "Size", "\tepsv", "  Auth\tTLS ", "211 End"}},
         {false, true, true, false, false, true}},
        {"look-alikes",
         {211,
          {"211-Features:", " XSIZE", " SIZES", " UTF8ONLY", " REST", " REST BLOCK", " AUTH SSL",
           " AUTH TLSX", " MLSD", " EPSV4", " NO SIZE", "", " ", ";", "211 End"}},
         {false, false, false, false, false, false}},
        {"none", {211, {"211 No features."}}, {false, false, false, false, false, false}},
        {"not understood", {500, {"500 SIZE"}}, {false, false, false, false, false, false}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ExpectFlags(ParseFeatures(row.reply), row.flags);
    }
}

TEST(SizeReply, IsAPlainDecimalNumber) {
    constexpr std::int64_t kNone = -1;
    const std::pair<const char*, std::int64_t> rows[] = {
        {"213 0", 0},
        {"213 48213", 48213},
        {"213  48213 ", 48213},
        {"213 0048213", 48213},
        {"213 4294967296", 4294967296},
        {"213 9223372036854775807", 9223372036854775807},
        {"213 9223372036854775808", kNone},
        {"213 99999999999999999999999", kNone},
        {"213 -1", kNone},
        {"213 +1", kNone},
        {"213 0x10", kNone},
        {"213 12 34", kNone},
        {"213 12.5", kNone},
        {"213 12,345", kNone},
        {"213 20261121101500.123", kNone},
        {"213 ", kNone},
        {"213", kNone},
        {"550 48213", kNone},
        {"200 48213", kNone},
    };
    for (const auto& [line, size] : rows) {
        SCOPED_TRACE(line);
        const auto parsed = ParseSizeReply({std::stoi(line), {line}});
        EXPECT_EQ(parsed.value_or(kNone), size);
    }
}

TEST(TransferSize, IsTheGroupThatEndsTheText) {
    constexpr std::int64_t kNone = -1;
    const std::pair<const char*, std::int64_t> rows[] = {
        {"150 Opening BINARY mode data connection for index.htm (48213 bytes).", 48213},
        {"150 Opening BINARY mode data connection for index.htm (48213 bytes)", 48213},
        {"150 Opening BINARY mode data connection for index.htm (0 bytes).", 0},
        {"150 Opening BINARY mode data connection for index.htm (1 byte).", 1},
        {"150 Opening BINARY mode data connection for x.zip (48213 Bytes).", 48213},
        {"125 Data connection already open; transfer starting (48213 bytes)", 48213},
        {"150 Opening for 1 2 3 (4).txt (48213 bytes).", 48213},
        {"150 Opening for a (99 bytes).txt (48213 bytes).", 48213},
        {"150 Opening for a (99 bytes) (48213 bytes).", 48213},
        {"150 Opening for a) (b (48213 bytes)", 48213},
        {"150 Opening for a (12,345 bytes)", 12345},
        {"150 Opening for a (1.234.567 bytes)", 1234567},
        {"150 Opening for a (12 345 bytes)", 12345},
        {"150 Opening for a (12'345 bytes)", 12345},
        {"150 Opening for a (9223372036854775807 bytes)", 9223372036854775807},
        {"150 Opening for a (9223372036854775808 bytes)", kNone},
        {"150 Opening for a (9,223,372,036,854,775,808 bytes)", kNone},
        {"150 Opening for a (99 bytes).txt", kNone},
        {"150 Opening for a (1234,567 bytes)", kNone},
        {"150 Opening for a (12,34 bytes)", kNone},
        {"150 Opening for a (12,3456 bytes)", kNone},
        {"150 Opening for a (1,234.567 bytes)", kNone},
        {"150 Opening for a (1,23a bytes)", kNone},
        {"150 Opening for a (12, bytes)", kNone},
        {"150 Opening for a (,123 bytes)", kNone},
        {"150 Opening for a (-12 bytes)", kNone},
        {"150 Opening for a (-12,345 bytes)", kNone},
        {"150 Opening for a (1.5 bytes)", kNone},
        {"150 Opening for a (12 kbytes)", kNone},
        {"150 Opening for a (12bytes)", kNone},
        {"150 Opening for a ( bytes)", kNone},
        {"150 Opening for a (bytes)", kNone},
        {"150 Opening for a 48213 bytes", kNone},
        {"150 128.0 kbytes to download", kNone},
        {"150 Starting data transfer.", kNone},
        {"150 )", kNone},
        {"150 (", kNone},
        {"150", kNone},
        {"226 Done (48213 bytes)", kNone},
    };
    for (const auto& [line, size] : rows) {
        SCOPED_TRACE(line);
        const auto parsed = ParseTransferSize({std::stoi(line), {line}});
        EXPECT_EQ(parsed.value_or(kNone), size);
    }
    EXPECT_FALSE(ParseTransferSize({150, {"150-Accepted data connection", "150 47.1 kbytes to download"}}));
}

}  // namespace
}  // namespace ftp
