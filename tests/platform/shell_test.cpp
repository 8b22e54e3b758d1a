#include "platform/shell.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <QFile>
#include <csignal>

#include "platform/drive_path.h"
#include "tests/platform/desktop.h"

namespace platform {
namespace {

const QList<QByteArray> kDifficultNames = {"Hjälp om #1 & 100%.txt",
                                           "latin-\366.txt",
                                           "a\\b?.txt",
                                           "två  blanka .txt",
                                           "citat \" ' ` $(touch x) ; | \\ %f %% .txt",
                                           "-streck.txt",
                                           "rad\nbrytning.txt"};

class ShellTest : public testing::Test {
 protected:
    ShellTest() { std::filesystem::create_directory(desktop_.Path("files")); }

    QString File(const QByteArray& name) const { return FromNative(Native(name)); }
    QByteArray Native(const QByteArray& name) const { return desktop_.Native("files/" + name); }
    void Touch(const QByteArray& name, const std::string& text = "text\n") const {
        desktop_.Write("files/" + name.toStdString(), text);
    }
    int Open(const QByteArray& name) const {
        return desktop_.Ask([&] { return OpenDocument(File(name)); });
    }
    int Edit(const QByteArray& name) const {
        return desktop_.Ask([&] { return OpenTextEditor(File(name)); });
    }
    /// The program that has been started, and its one argument.
    void ExpectStarted(const QByteArray& program, const QByteArray& argument) const {
        const auto started = desktop_.Started();
        ASSERT_TRUE(started) << argument.toPercentEncoding().toStdString();
        EXPECT_EQ(started->name, program);
        EXPECT_EQ(started->arguments, QList<QByteArray>{argument});
    }
    /// Whatever the program's entry asks for, it gets the path: addresses are only for what has none.
    void OpenDifficultNames(int (*open)(const QString&)) {
        desktop_.Install("skrivare");
        desktop_.SetDefault("text/plain", "skrivare");
        for (const char* code : {"%f", "%F", "%u", "%U", ""}) {
            desktop_.AddEntry("skrivare", std::string("skrivare ") + code);
            for (const QByteArray& name : kDifficultNames) {
                Touch(name);
                EXPECT_EQ(desktop_.Ask([&] { return open(File(name)); }), kShellStarted);
                ExpectStarted("skrivare", Native(name));
            }
        }
    }
    Desktop desktop_;
};

using OpenDocumentTest = ShellTest;
using OpenTextEditorTest = ShellTest;

TEST_F(OpenDocumentTest, OpensTheVeryDocument) {
    OpenDifficultNames(&OpenDocument);
}

TEST_F(OpenDocumentTest, ChoosesTheProgramByTheType) {
    desktop_.Associate("text/html", "bläddrare");
    desktop_.Associate("text/plain", "skrivare");
    desktop_.Associate("inode/directory", "mappar");
    Touch("sida.htm", "bara text\n");
    Touch("text.txt", "<html></html>");
    Touch("namnlös", "<!DOCTYPE html>\n<html></html>\n");
    Touch("läsmig", "bara text\n");
    const std::pair<QByteArray, QByteArray> rows[] = {{"sida.htm", "bläddrare"},
                                                      {"text.txt", "skrivare"},
                                                      {"namnlös", "bläddrare"},
                                                      {"läsmig", "skrivare"}};
    for (const auto& [name, program] : rows) {
        EXPECT_EQ(Open(name), kShellStarted);
        ExpectStarted(program, Native(name));
    }
    const QString folder = Join(File("x"), "..\\");
    EXPECT_EQ(desktop_.Ask([&] { return OpenDocument(folder); }), kShellStarted);
    ExpectStarted("mappar", desktop_.Native("files"));
    EXPECT_EQ(Open("SIDA.HTM"), kShellStarted);
    ExpectStarted("bläddrare", Native("sida.htm"));
}

TEST_F(OpenDocumentTest, FindsOutWhatIsNotThere) {
    desktop_.Associate("text/html", "bläddrare");
    EXPECT_EQ(Open("saknas.htm"), kShellNotFound);
    EXPECT_EQ(OpenDocument("saknas.htm"), kShellNotFound);
    EXPECT_EQ(OpenDocument(""), kShellNotFound);
}

TEST_F(OpenDocumentTest, SaysWhenNoProgramTakesTheDocument) {
    Touch("sida.htm");
    Touch("namnlös", std::string("\0\1\2", 3));
    EXPECT_EQ(Open("sida.htm"), kShellNoAssociation);  // a desktop with nothing at all
    EXPECT_EQ(Open(""), kShellNoAssociation);
    desktop_.Associate("image/png", "bildvisare");
    EXPECT_EQ(Open("sida.htm"), kShellNoAssociation);
    EXPECT_EQ(Open("namnlös"), kShellNoAssociation);
    desktop_.AddEntry("avinstallerad", "avinstallerad %f");
    desktop_.SetDefault("text/html", "avinstallerad");
    EXPECT_EQ(Open("sida.htm"), kShellNoAssociation);
}

// The types are known from a data base of the desktop's.
TEST_F(OpenDocumentTest, DoesWithoutKnowledgeOfTypes) {
    std::filesystem::remove(desktop_.Path("data/mime"));
    desktop_.Associate("text/html", "bläddrare");
    Touch("sida.htm");
    EXPECT_EQ(Open("sida.htm"), kShellNoAssociation);
}

TEST_F(OpenDocumentTest, NeedsATerminalForAProgramThatWantsOne) {
    desktop_.Associate("text/plain", "vi", "%f", "Terminal=true\n");
    Touch("a.txt");
    EXPECT_EQ(Open("a.txt"), kShellNoAssociation);
    desktop_.Install("xterm");
    EXPECT_EQ(Open("a.txt"), kShellStarted);
    const auto started = desktop_.Started();
    ASSERT_TRUE(started);
    EXPECT_EQ(started->name, "xterm");
    EXPECT_EQ(started->arguments.last(), Native("a.txt"));
}

TEST_F(OpenDocumentTest, StartsTheProgramInTheRootFolderOrItsOwn) {
    Touch("a.txt");
    desktop_.Associate("text/plain", "skrivare");
    EXPECT_EQ(Open("a.txt"), kShellStarted);
    EXPECT_EQ(desktop_.Started().value().folder, "/");
    const QByteArray own = desktop_.Native("config");
    desktop_.AddEntry("skrivare", "skrivare %f", "Path=" + own.toStdString() + '\n');
    EXPECT_EQ(Open("a.txt"), kShellStarted);
    EXPECT_EQ(desktop_.Started().value().folder, own);
}

/// A session bus that takes calls and answers none; its descriptor, or -1.
int StoppedBus(const std::string& path) {
    const int bus = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{AF_UNIX, {}};
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const bool listens =
        bind(bus, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 && listen(bus, 5) == 0;
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1);
    return listens ? bus : -1;
}

/// How many threads of this process are not GLib's, which give themselves names.
int OwnThreads() {
    const auto name_of = [](const std::filesystem::path& task) {
        std::string name;
        std::getline(std::ifstream(task / "comm"), name);
        return name;
    };
    int own = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        own += name_of(task.path()) == name_of("/proc/self");
    }
    return own;
}

// Not even when the bus goes on, or goes away, after the document has been given up.
TEST_F(OpenDocumentTest, GivesUpADocumentThatABusHoldsUp) {
    desktop_.BeforeReport("printf '%s\\n' \"$1\" >>'" + desktop_.Path("opened") + "'");
    desktop_.Associate("text/plain", "skrivare");
    Touch("a.txt");
    Touch("b.txt");
    const int failed = desktop_.Ask([&] {
        alarm(60);
        prctl(PR_SET_CHILD_SUBREAPER, 1);  // so that it sees the end of all that is started
        const int bus = StoppedBus(desktop_.Path("bus"));
        if (bus < 0) return 1;
        if (OpenDocument(File("a.txt")) != kShellNoAssociation) return 2;
        if (OwnThreads() != 2) return 3;
        if (OpenTextEditor(File("b.txt")) != kShellStarted) return 4;
        close(bus);
        while (OwnThreads() != 1) usleep(1000);
        while (wait(nullptr) > 0) {
        }
        return 0;
    });
    EXPECT_EQ(failed, 0);
    ExpectStarted("skrivare", Native("b.txt"));
    QFile opened(QFile::decodeName(desktop_.Native("opened")));
    ASSERT_TRUE(opened.open(QIODevice::ReadOnly));
    EXPECT_EQ(opened.readAll(), Native("b.txt") + '\n');
}

TEST_F(OpenTextEditorTest, OpensTheVeryFile) {
    OpenDifficultNames(&OpenTextEditor);
}

TEST_F(OpenTextEditorTest, KeepsTheFurtherArgumentsOfTheEntry) {
    desktop_.Associate("text/plain", "skrivare", "--titel \"Min %c\" %U --sist");
    Touch("a.txt");
    EXPECT_EQ(Edit("a.txt"), kShellStarted);
    EXPECT_EQ(desktop_.Started().value().arguments,
              (QList<QByteArray>{"--titel", "Min skrivare", Native("a.txt"), "--sist"}));
}

TEST_F(OpenTextEditorTest, TakesEveryType) {
    desktop_.Associate("text/html", "bläddrare");
    desktop_.Associate("text/plain", "skrivare");
    Touch("sida.htm");
    Touch("bild.png", std::string("\x89PNG\r\n\x1a\n\0", 9));
    for (const QByteArray name : {"sida.htm", "bild.png"}) {
        EXPECT_EQ(Edit(name), kShellStarted);
        ExpectStarted("skrivare", Native(name));
    }
}

TEST_F(OpenTextEditorTest, TakesAKnownEditorWhereTheDesktopHasNone) {
    Touch("a.txt");
    EXPECT_EQ(Edit("a.txt"), kShellNoAssociation);
    for (const char* editor : {"xedit", "mousepad", "gedit"}) {  // a better one each time
        desktop_.Install(editor);
        EXPECT_EQ(Edit("a.txt"), kShellStarted);
        ExpectStarted(editor, Native("a.txt"));
    }
    EXPECT_EQ(Edit("a.txt"), kShellStarted);
    EXPECT_EQ(desktop_.Started().value().folder, "/");
}

TEST_F(OpenTextEditorTest, PassesOverAProgramForTheTerminal) {
    desktop_.Associate("text/plain", "vi", "%f", "Terminal=true\n");
    desktop_.Install("xterm");
    Touch("a.txt");
    EXPECT_EQ(Edit("a.txt"), kShellNoAssociation);
    desktop_.Install("kate");
    EXPECT_EQ(Edit("a.txt"), kShellStarted);
    ExpectStarted("kate", Native("a.txt"));
}

TEST_F(OpenTextEditorTest, FindsOutWhatIsNotThere) {
    desktop_.Associate("text/plain", "skrivare");
    EXPECT_EQ(Edit("saknas.txt"), kShellNotFound);
    EXPECT_EQ(Edit(""), kShellNotFound);  // a folder
    EXPECT_EQ(OpenTextEditor("a.txt"), kShellNotFound);
}

// Both ways of starting a program.
class StartedProgramTest : public ShellTest, public testing::WithParamInterface<int (*)(const QString&)> {};

TEST_P(StartedProgramTest, RunsForItself) {
    const int ours = open(desktop_.Path("ours").c_str(), O_RDWR | O_CREAT, 0600);  // not close-on-exec
    ASSERT_GE(ours, 0);
    Touch("a.txt");
    // The program reports when we are gone.
    desktop_.BeforeReport("i=0; until [ -e '" + desktop_.Path("gone") +
                          "' ] || [ $((i += 1)) -gt 2000 ]; do sleep 0.01; done");
    desktop_.Associate("text/plain", "skrivare");
    const int result = desktop_.Ask([&] {
        setpgid(0, 0);
        std::signal(SIGHUP, [](int) {});  // so that only this process outlives it
        const int opened = GetParam()(File("a.txt"));
        const bool no_child = waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD;
        kill(0, SIGHUP);  // as when the terminal closes
        return no_child ? opened : -1;
    });
    close(ours);
    desktop_.Write("gone", "");
    EXPECT_EQ(result, kShellStarted);
    const auto started = desktop_.Started();
    ASSERT_TRUE(started);
    EXPECT_TRUE(started->leads_session);
    EXPECT_FALSE(started->holds_ours);
    EXPECT_TRUE(started->has_silent_streams);
}

INSTANTIATE_TEST_SUITE_P(BothWays, StartedProgramTest, testing::Values(&OpenDocument, &OpenTextEditor));

}  // namespace
}  // namespace platform
