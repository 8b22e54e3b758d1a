// Names in a listing that are more, or less, than names.

#include <gtest/gtest.h>

#include <QFile>
#include <algorithm>

#include "ftp/listing_rows.h"
#include "platform/drive_path.h"
#include "tests/ftp/faults/stage.h"

namespace ftp {
namespace {

using namespace ftp_test;

struct Fault {
    const char* name;
    std::string text;  // without blanks, as the last one begins the name of a listing's line
    bool usable;       // as a name on this computer
};

const std::vector<Fault> kFaults = {
    {"Parent", "..", false},
    {"Itself", ".", false},
    {"Climbing", "../../ute.htm", false},
    {"ClimbingBackwards", "..\\..\\ute.htm", false},
    {"ClimbingInTheMiddle", "a/../../ute.htm", false},
    {"Absolute", "/tmp/websmide-ute.htm", false},
    {"AbsoluteBackwards", "\\ute.htm", false},
    {"InAFolder", "bilder/ute.htm", false},
    {"InAFolderBackwards", "bilder\\ute.htm", false},
    {"OnADrive", "C:ute.htm", false},
    {"OnADriveFromItsRoot", "C:\\ute.htm", false},
    {"Home", "~", true},
    {"Option", "-rf", true},
    {"Format", "%s%n%x", true},
    {"Pipe", "|ls", true},
    {"Wildcards", "*?[a]", true},
    {"Quotes", "\"'`$(ls)", true},
    {"Newline", "a\rDELE", false},
    {"Nul", std::string("a\0.htm", 6), false},
    {"Escapes", "a\x1b[2J.htm", true},
    {"Bell", "a\x07.htm", true},
    {"Delete", "a\x7f.htm", true},
    {"RightToLeft", "a\xE2\x80\xAEmth.exe", true},
    {"Isolate", "a\xE2\x81\xA6.htm", true},
    {"ZeroWidth", "a\xE2\x80\x8B.htm", true},
    {"FourThousandBytes", std::string(4000, 'x'), false},
    {"TwoHundredFiftySixBytes", std::string(256, 'x'), false},
    {"InvalidUtf8", "a\xFF\xFE\x80.htm", true},
    {"CutUtf8", "a\xE2\x80", true},
    {"OverlongUtf8", "..\xC0\xAF..\xC0\xAFute.htm", true},
    {"Surrogates", "a\xED\xA0\x80.htm", true},
    {"PrivateSeparator", "..\xEF\x81\x9Cute.htm", false},  // U+F05C, which stands for "\" in local paths
    {"PrivateSlash", "..\xEF\x80\xAFute.htm", true},
};

class NameFault : public FaultStage, public testing::WithParamInterface<Fault> {
 protected:
    void SetUp() override {
        UseDeadlines(kPatient);
        component->ResolveLocalPath = &platform::Resolve;
        EXPECT_TRUE(Do(Work::Connect));
        server.SetListing({"-rw-r--r-- 1 a a 3000 Jan 01 00:00 " + GetParam().text,
                           "-rw-r--r-- 1 a a 3000 Jan 01 00:00 ny.htm"});
        server.AddFile(GetParam().text, whole);
        for (const char* verb : {"SIZE ", "RETR ", "DELE "}) expected.push_back(verb + OnTheWire());
        expected.push_back("RNFR " + OnTheWire());
        expected.push_back("RNTO annat.htm");
    }

    /// As it comes back to the server.
    std::string OnTheWire() const { return GetParam().text; }

    /// As the main window shows it, and sends it back.
    QString Shown() const { return NameOfListingLine(listing.first()); }
    void Fetch(const QString& name) {
        errors.clear();
        component->SourceFileName = name;
        component->DestinationFileName =
            platform::Join(platform::FromNative(QFile::encodeName(Local(QString()))), name);
        component->GetFile();
    }
    bool Sent(const std::string& command) const {
        const auto commands_sent = server.Commands();
        return std::ranges::find(commands_sent, command) != commands_sent.end();
    }
};

/// What is fetched under such a name is a file in the chosen folder, or nothing at all.
TEST_P(NameFault, StaysInTheFolder) {
    EXPECT_TRUE(Do(Work::List));
    ASSERT_EQ(listing.size(), 2);
    Fetch(Shown());
    EXPECT_EQ(errors.empty(), GetParam().usable) << Told();
    EXPECT_EQ(Sent("RETR " + OnTheWire()), GetParam().usable);
    EXPECT_EQ(NamesOutside(), std::vector<std::string>());
    std::vector<std::string> names = Names();
    EXPECT_EQ(names.size(), GetParam().usable ? 3U : 2U);
    std::erase_if(names, [](const auto& name) { return name == "egen.htm" || name == "gammal.htm"; });
    for (const std::string& name : names) EXPECT_TRUE(QFile::remove(Local(QFile::decodeName(name.c_str()))));
    for (const Work work : {Work::Get, Work::List, Work::Quit}) EXPECT_TRUE(Do(work)) << Told();
}

/// It is that very file that is deleted.
TEST_P(NameFault, IsTheNameThatIsDeleted) {
    EXPECT_TRUE(Do(Work::List));
    errors.clear();
    component->SourceFileName = component->DestinationFileName = Shown();
    component->DeleteFile();
    const bool possible = GetParam().text.find_first_of(std::string("\r\n\0", 3)) == std::string::npos;
    EXPECT_EQ(errors.empty(), possible) << Told();
    EXPECT_EQ(Sent("DELE " + OnTheWire()), possible);
    EXPECT_EQ(server.File(GetParam().text).has_value(), !possible);
    for (const Work work : {Work::Get, Work::List, Work::Quit}) EXPECT_TRUE(Do(work)) << Told();
}

INSTANTIATE_TEST_SUITE_P(All, NameFault, testing::ValuesIn(kFaults),
                         [](const auto& fault) { return std::string(fault.param.name); });

}  // namespace
}  // namespace ftp
