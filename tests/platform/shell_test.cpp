#include "platform/shell.h"

#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QFile>
#include <QGuiApplication>
#include <QUrl>

#include "platform/drive_path.h"
#include "tests/platform/scratch_folder.h"

namespace platform {
namespace {

// Stands where the desktop's program would be started.
class Desktop : public QObject {
    Q_OBJECT
 public:
    Desktop() { QDesktopServices::setUrlHandler("file", this, "Open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler("file"); }
    QList<QByteArray> opened;
 public Q_SLOTS:
    void Open(const QUrl& url) { opened += url.toEncoded(); }
};

class ShellTest : public testing::Test {
 protected:
    int argc_ = 3;
    char arguments_[3][12] = {"shell_test", "-platform", "offscreen"};
    char* argv_[4] = {arguments_[0], arguments_[1], arguments_[2], nullptr};
    QGuiApplication application_{argc_, argv_};
    ScratchFolder folder_;
    QString Path(const QString& name) { return Join(FromNative(folder_.Native()), name); }
    QByteArray Url(const QByteArray& name) { return "file://" + folder_.Native(name); }
};

TEST_F(ShellTest, OpensTheVeryDocument) {
    Desktop desktop;
    const QByteArray names[] = {"Hjälp om #1 & 100%.htm", "latin-\366.txt", "a\\b?.txt"};
    for (const QByteArray& name : names) {
        const QByteArray native = folder_.Native(name);
        FILE* file = std::fopen(native.constData(), "w");
        ASSERT_NE(file, nullptr);
        std::fclose(file);
        EXPECT_EQ(OpenDocument(Path(NameFromNative(name))), kShellStarted);
        ASSERT_FALSE(desktop.opened.isEmpty());
        const QByteArray encoded = desktop.opened.takeLast();
        EXPECT_EQ(QByteArray::fromPercentEncoding(encoded), Url(name)) << encoded.toStdString();
        EXPECT_FALSE(encoded.contains('#') || encoded.contains('?')) << encoded.toStdString();
    }
    EXPECT_EQ(OpenDocument(Path("HJÄLP OM #1 & 100%.HTM")), kShellStarted);
    EXPECT_EQ(OpenDocument(Path("x\\..\\")), kShellStarted);
    EXPECT_EQ(desktop.opened.size(), 2);
}

TEST_F(ShellTest, FindsOutWhatIsNotThere) {
    Desktop desktop;
    EXPECT_EQ(OpenDocument(Path("saknas.htm")), kShellNotFound);
    EXPECT_EQ(OpenDocument("saknas.htm"), kShellNotFound);
    EXPECT_EQ(OpenDocument(""), kShellNotFound);
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ShellTest, SaysWhenNoProgramTakesTheDocument) {
    EXPECT_EQ(OpenDocument(Path("")), kShellNoAssociation);  // this platform starts no programs
}

}  // namespace
}  // namespace platform

#include "shell_test.moc"
