#include "ftp/component.h"
#include "tests/forms/session/session.h"

namespace forms {
namespace {

/// The strip by the component's events alone.
class ProgressStrip : public Session {
 protected:
    void SetUp() override {
        Session::SetUp();
        Open();
        ftp1_ = window_->findChild<ftp::Component*>();
    }

    void Report(std::int64_t bytes) { Q_EMIT ftp1_->Progress(bytes); }

    void Upload(qint64 size) {
        MakeFile("a.txt", size);
        ftp1_->SourceFileName = platform::Join(Folder(), "a.txt");
        app::Globals().UploadRunning = 1;
    }

    void ExpectStrip(const QString& bytes, const QString& percent, double share) {
        EXPECT_EQ(Strip("label7"), bytes);
        EXPECT_EQ(Strip("antal"), percent);
        EXPECT_EQ(Strip("antal2"), percent);
        EXPECT_NEAR(BarWidth(), FullWidth() * share, 0.001);
    }

    ftp::Component* ftp1_ = nullptr;
};

TEST_F(ProgressStrip, WithoutATransferOnlyTheBytesAreCounted) {
    const QString size = app::Globals().FileSizeText;
    Report(700);
    ExpectStrip("700", "0 %", 0);
    EXPECT_EQ(app::Globals().FileSizeText, size);
}

TEST_F(ProgressStrip, AnUploadIsMeasuredByTheLocalFile) {
    Upload(48213);
    Report(20480);
    ExpectStrip("20480", "42 %", 20480.0 / 48213);
    EXPECT_EQ(app::Globals().FileSizeText, "48213");
    Report(48212);
    ExpectStrip("48212", "100 %", 48212.0 / 48213);
    EXPECT_LT(BarWidth(), FullWidth());
    Report(48213);
    ExpectStrip("48213", "100 %", 1);
}

TEST_F(ProgressStrip, HalvesGoToTheEvenNeighbour) {
    Upload(1000);
    Report(125);
    ExpectStrip("125", "12 %", 0.125);
    Report(135);
    ExpectStrip("135", "14 %", 0.135);
}

TEST_F(ProgressStrip, AnEmptyFileMovesNothing) {
    Upload(0);
    Report(0);
    ExpectStrip("0", "0 %", 0);
}

TEST_F(ProgressStrip, ADownloadIsMeasuredByTheSizeColumn) {
    ftp_test::ScriptedServer server;
    server.SetListing({"-rw-r--r--   1 ftp      ftp         48213 Jan 01 10:00 a.txt",
                       "-rw-r--r--   1 ftp      ftp",
                       "-rw-r--r--   1 ftp      ftp       100 Jan 01 10:00 b.txt"});
    Connect(server.HostField());
    ClickServer("a.txt");
    app::Globals().DownloadRunning = 1;
    Report(20480);
    ExpectStrip("20480", "42 %", 20480.0 / 48213);
    EXPECT_EQ(app::Globals().FileSizeText, "48213 ");
    ClickRow("listdir2", 1);  // too short: the size stays
    Report(48213);
    ExpectStrip("48213 ", "100 %", 1);
    ClickServer("b.txt");
    Report(50);
    ExpectStrip("50", "50 %", 0.5);
}

TEST_F(ProgressStrip, TheFolderUploadRunsOverAllItsFiles) {
    Get<QLabel>("label7").setProperty("tag", 8000);
    app::Globals().FolderUploadRunning = true;
    app::Globals().FolderUploadTotal = 20000;
    Report(1000);
    ExpectStrip("9000", "45 %", 0.45);
    EXPECT_EQ(app::Globals().FileSizeText, "20000");
    Report(10976);  // 1024 short of the total
    ExpectStrip("18976", "95 %", 0.9488);
    Report(10977);
    ExpectStrip("20000", "100 %", 1);
}

}  // namespace
}  // namespace forms
