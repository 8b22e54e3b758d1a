#include "tests/forms/session/session.h"
#include "tests/support/longest_work.h"

using ftp_test::Make;
using toolkit_test::ExpectBox;
using toolkit_test::kLongestWork;
using toolkit_test::LongestWork;

namespace forms {
namespace {

class Stalls : public Session {
 protected:
    /// Answers the question, and measures from the answer on.
    double LongestWorkOfDeleting(const std::function<void()>& ask) {
        std::unique_ptr<LongestWork> work;
        ExpectBox box("Ta bort filer", "Vill du ta bort alla markerade filer ?", "cmdYes");
        box.Meanwhile([&](QDialog&) { work = std::make_unique<LongestWork>(); });
        ask();
        return work->Milliseconds();
    }
};

TEST_F(Stalls, TenThousandLocalFilesAreDeletedWhileTheWindowLives) {
    constexpr int kFiles = 10'000;
    for (int i = 0; i < kFiles; ++i) MakeFile(QStringLiteral("Fil%1.txt").arg(i), 0);
    Open();
    ClickRow("list2", 0);
    QTest::keyClick(&Get("list2"), Qt::Key_A, Qt::ControlModifier);
    ASSERT_EQ(Get<toolkit::ListBox>("List1").SelCount(), kFiles);
    EXPECT_LT(LongestWorkOfDeleting([this] { QTest::keyClick(&Get("list2"), Qt::Key_Delete); }),
              kLongestWork);
    EXPECT_EQ(LocalNames(), QStringList());
    EXPECT_EQ(Names(), QStringList());
    EXPECT_EQ(TraceLines(), QStringList());
}

TEST_F(Stalls, ClosingTheWindowKeepsWhatHasNotBeenDeletedYet) {
    constexpr int kFiles = 10'000;
    for (int i = 0; i < kFiles; ++i) MakeFile(QStringLiteral("Fil%1.txt").arg(i), 0);
    Open();
    ClickRow("list2", 0);
    QTest::keyClick(&Get("list2"), Qt::Key_A, Qt::ControlModifier);
    ExpectBox box("Ta bort filer", "Vill du ta bort alla markerade filer ?", "cmdYes");
    When([this] { return !QFile::exists(files_.filePath("Fil0.txt")); }, [this] { window_->close(); });
    QTest::keyClick(&Get("list2"), Qt::Key_Delete);
    EXPECT_FALSE(window_->isVisible());
    EXPECT_FALSE(LocalNames().isEmpty());
}

class StallsOn : public Stalls, public ::testing::WithParamInterface<Make> {
 protected:
    void SetUp() override {
        if (auto reason = ftp_test::WhyMissing(GetParam())) GTEST_SKIP() << *reason;
        Stalls::SetUp();
    }
};

TEST_P(StallsOn, AThousandServerFilesAreDeletedWhileTheWindowLives) {
    constexpr int kFiles = 1'000;
    ftp_test::Server server(GetParam());
    for (int i = 0; i < kFiles; ++i) server.WriteFile("fil" + std::to_string(i) + ".txt", "");
    Open();
    Connect(server.HostField());
    ClickRow("listdir2", 0);
    QTest::keyClick(&Get("listdir2"), Qt::Key_A, Qt::ControlModifier);
    ASSERT_EQ(ServerLines().SelCount(), kFiles);
    EXPECT_LT(LongestWorkOfDeleting([this] { QTest::keyClick(&Get("listdir2"), Qt::Key_Delete); }),
              kLongestWork);
    EXPECT_TRUE(std::filesystem::is_empty(server.Home()));
    EXPECT_EQ(ServerLines().ListCount(), 0);
}

INSTANTIATE_TEST_SUITE_P(Servers, StallsOn, ::testing::ValuesIn(ftp_test::AllServers()),
                         [](const auto& server) { return ftp_test::Name(server.param); });

}  // namespace
}  // namespace forms
