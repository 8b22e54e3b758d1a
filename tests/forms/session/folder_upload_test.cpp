#include "tests/forms/session/folder_upload.h"

#include <map>
#include <random>

#include "tests/support/longest_work.h"

using ftp_test::Make;

namespace forms {
namespace {

namespace fs = std::filesystem;

/// What lies below a folder: files with their bytes, and folders, whose paths end in "/".
using Tree = std::map<std::string, std::string>;

/// A large file's bytes are told by their number and a hash.
std::string BytesOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    if (bytes.size() < 20) return bytes;
    return std::to_string(bytes.size()) + ':' + std::to_string(std::hash<std::string>()(bytes));
}

Tree TreeBelow(const fs::path& folder) {
    Tree tree;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const std::string path = entry.path().lexically_relative(folder);
        tree.emplace(entry.is_directory() ? path + '/' : path,
                     entry.is_directory() ? "" : BytesOf(entry.path()));
    }
    return tree;
}

/// What the lines of a job list make of an empty server.
Tree Promised(const QStringList& jobs) {
    Tree tree;
    std::vector<std::string> here{""};
    for (qsizetype row = 0; row < jobs.size(); ++row) {
        const QString& line = jobs[row];
        if (line == "cd ..") {
            if (row > 0 && here.size() > 1) here.pop_back();
        } else if (line.startsWith("Skapa ")) {
            here.push_back(here.back() + line.mid(6).toStdString() + '/');
            tree.emplace(here.back(), "");
        } else {
            const auto source = platform::Resolve(line.mid(4));
            tree[here.back() + line.mid(line.lastIndexOf('\\') + 1).toStdString()] =
                BytesOf(source.value_or("").toStdString());
        }
    }
    return tree;
}

class FolderUploadTo : public FolderUpload, public ::testing::WithParamInterface<Make> {
 protected:
    void SetUp() override {
        if (auto reason = ftp_test::WhyMissing(GetParam())) GTEST_SKIP() << *reason;
        FolderUpload::SetUp();
        // pyftpdlib looks into the folder in which it was started at each change of directory.
        fs::permissions(files_.path().toStdString(), fs::perms(0755));
    }

    /// A tree of any shape, deep branches and folders that differ only by case among it.
    void MakeTree(unsigned seed) {
        std::mt19937 random(seed);
        const auto any = [&random](unsigned below) { return random() % below; };
        const std::string names[] = {"a", "A", "Bilder", "å ä ö", "sub", "SUB", "x y"};
        std::vector<std::string> folders{"Tree"};
        for (int i = 0; i < 24; ++i)
            folders.push_back(
                folders[any(2) ? folders.size() - 1 : any(static_cast<unsigned>(folders.size()))] + '/' +
                names[any(std::size(names))]);
        for (const std::string& folder : folders) {
            fs::create_directories(fs::path(files_.path().toStdString()) / folder);
            for (unsigned file = any(4); file > 0; --file) {
                const std::size_t size = any(12) == 0 ? 300'000 : any(3000);
                MakeFile(folder + "/Fil" + std::to_string(file) + (any(2) ? ".TXT" : ".txt"),
                         std::string(size, static_cast<char>('a' + any(26))));
            }
        }
    }
};

TEST_P(FolderUploadTo, TheServerHasWhatTheJobListPromises) {
    for (const unsigned seed : {1U, 2U, 3U}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        fs::remove_all(files_.filePath("Tree").toStdString());
        MakeTree(seed);
        ftp_test::Server server(GetParam());
        Open();
        Connect(server.HostField());
        Choose("Tree");
        const Tree promised = Promised(Send("tree"));
        EXPECT_GT(promised.size(), 25u);
        EXPECT_EQ(TreeBelow(server.Home()), promised);
        ExpectIdle();
        EXPECT_EQ(ServerRowOf("tree"), 0);  // back where it began
        EXPECT_EQ(ServerLines().ListCount(), 1);

        // Once more: the folders are there already, and that stops nothing.
        Choose("Tree", false);
        Send("tree");
        EXPECT_EQ(TreeBelow(server.Home()), promised);
        ExpectIdle();
        EXPECT_EQ(ServerRowOf("tree"), 0);
        EXPECT_EQ(ServerLines().ListCount(), 1);
        Close();
    }
}

TEST_P(FolderUploadTo, GoesWhereTheWindowIs) {
    MakeFile("Webb/a.txt", "hej");
    ftp_test::Server server(GetParam());
    server.MakeFolder("inne");
    Open();
    Connect(server.HostField());
    DoubleClickServer("inne");
    Choose("Webb");
    Send("webb");
    EXPECT_EQ(TreeBelow(server.Home()),
              Tree({{"inne/", ""}, {"inne/webb/", ""}, {"inne/webb/a.txt", "hej"}}));
    EXPECT_EQ(ServerRowOf("webb"), 0);
    EXPECT_EQ(Get<QLabel>("label7").property("tag"), "3");
}

TEST_P(FolderUploadTo, GoesOnAfterAFolderThatIsRefused) {
    MakeFile("A/closed/new/f", "1");
    MakeFile("A/closed/f", "2");
    MakeFile("A/open/f", "3");
    ftp_test::Server server(GetParam());
    for (const char* folder : {"a", "a/closed", "a/closed/new"}) server.MakeFolder(folder);
    server.ProtectFolder("a/closed/new");
    server.ProtectFolder("a/closed");
    Open();
    Connect(server.HostField());
    Choose("A");
    Send("a");
    EXPECT_EQ(
        TreeBelow(server.Home()),
        Tree({{"a/", ""}, {"a/closed/", ""}, {"a/closed/new/", ""}, {"a/open/", ""}, {"a/open/f", "3"}}));
    EXPECT_GE(TraceLines().filter("Fel nummer:55").size(), 2) << qPrintable(TraceLines().join('\n'));
    ExpectIdle();
}

TEST_P(FolderUploadTo, GoesOnWhereNothingMayBeMade) {
    MakeFile("A/b/f", "1");
    ftp_test::Server server(GetParam());
    server.ProtectFolder("");
    Open();
    Connect(server.HostField());
    Choose("A");
    Send("a");
    EXPECT_EQ(TreeBelow(server.Home()), Tree());
    ExpectIdle();
}

/// pyftpdlib falls silent when its disk is full.
class FolderUploadToFullDisk : public FolderUploadTo {};

TEST_P(FolderUploadToFullDisk, GoesOnAfterAFileThatHasNoRoom) {
    MakeFile("A/1.txt", "ett");
    MakeFile("A/2.bin", std::string(3 << 20, 'x'));
    MakeFile("A/b/3.txt", "tre");
    ftp_test::Server server(GetParam(), {.home_bytes = 1 << 20});
    Open();
    Connect(server.HostField());
    Choose("A");
    Send("a");
    const Tree tree = TreeBelow(server.Home());
    EXPECT_EQ(tree.at("a/1.txt"), "ett");
    EXPECT_TRUE(tree.contains("a/b/"));
    EXPECT_GE(TraceLines().filter("Fel nummer:").size(), 1);
    ExpectIdle();
}

TEST_P(FolderUploadTo, EndsWhenTheServerDies) {
    for (int i = 0; i < 40; ++i) MakeFile("A/m" + std::to_string(i) + "/f.txt", std::string(20'000, 'x'));
    ftp_test::Server server(GetParam());
    Open();
    Connect(server.HostField());
    Choose("A");
    When([&] { return server.ReadFile("a/m1/f.txt").has_value(); }, [&] { server.Kill(); });
    Send("a");
    EXPECT_FALSE(fs::exists(server.Home() / "a/m9/f.txt"));
    EXPECT_GE(TraceLines().filter("Fel nummer:").size(), 40);
    ExpectIdle();
}

TEST_P(FolderUploadTo, TheWindowLivesMeanwhile) {
    for (int i = 0; i < 300; ++i)
        MakeFile("A/m" + std::to_string(i % 20) + "/f" + std::to_string(i), std::string(200, 'x'));
    ftp_test::Server server(GetParam());
    Open();
    Connect(server.HostField());
    Choose("A");
    const toolkit_test::LongestWork work;
    Send("a");
    EXPECT_LT(work.Milliseconds(), toolkit_test::kLongestWork);
    EXPECT_EQ(TreeBelow(server.Home()).size(), 321u);
}

INSTANTIATE_TEST_SUITE_P(Servers, FolderUploadTo, ::testing::ValuesIn(ftp_test::AllServers()),
                         [](const auto& server) { return ftp_test::Name(server.param); });
INSTANTIATE_TEST_SUITE_P(Servers, FolderUploadToFullDisk,
                         ::testing::Values(Make::Vsftpd, Make::PureFtpd, Make::ProFtpd),
                         [](const auto& server) { return ftp_test::Name(server.param); });

}  // namespace
}  // namespace forms
