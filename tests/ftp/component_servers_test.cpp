// The component with real servers, several makes of them.

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <filesystem>

#include "ftp/listing_rows.h"
#include "tests/ftp/component_fixture.h"
#include "tests/support/ftp_server.h"

namespace ftp {
namespace {

using ftp_test::Make;
using ftp_test::Server;

constexpr std::int64_t kGigabyte = 1024 * 1024 * 1024;

class ComponentAtServer : public ComponentTest, public testing::WithParamInterface<Make> {
 protected:
    void SetUp() override {
        if (const auto reason = ftp_test::WhyMissing(GetParam())) GTEST_SKIP() << *reason;
        server.emplace(GetParam());
        Connect(server->HostField());
        ASSERT_TRUE(component->Connected()) << trace.join(u'\n').toStdString();
    }

    QString Local(const char* name) const { return local.filePath(QString::fromUtf8(name)); }

    void Put(const QString& path, const char* name) {
        component->SourceFileName = path;
        component->DestinationFileName = QString::fromUtf8(name);
        component->PutFile();
    }
    void Get(const char* name, const QString& path) {
        component->SourceFileName = QString::fromUtf8(name);
        component->DestinationFileName = path;
        component->GetFile();
    }
    QStringList Names() {
        listing.clear();
        component->ListDirectory();
        QStringList names;
        for (const QString& line : listing) {
            const QString name = NameOfListingLine(line);
            if (!IsSummaryLine(line) && name != QStringLiteral(".") && name != QStringLiteral(".."))
                names += name;
        }
        names.sort();
        return names;
    }

    std::optional<Server> server;
    QTemporaryDir local;
};

INSTANTIATE_TEST_SUITE_P(Every, ComponentAtServer, testing::ValuesIn(ftp_test::AllServers()),
                         [](const auto& make) { return ftp_test::Name(make.param); });

QByteArray Pattern(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 31 + (i >> 12));
    return bytes;
}

void Write(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

QByteArray Read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

// What is there already is no failure of a folder that is sent again; one that cannot be entered is.
TEST_P(ComponentAtServer, TellsADirectoryThatIsThereFromOneThatCannotBeEntered) {
    std::vector<bool> not_made;
    QObject::connect(component.get(), &Component::Error, [&] { not_made.push_back(component->NotMade()); });
    component->DirectoryName = QStringLiteral("bilder");
    component->MakeDirectory();
    EXPECT_EQ(not_made, std::vector<bool>());
    component->MakeDirectory();
    EXPECT_EQ(not_made, std::vector<bool>{true});
    {
        const TransferRun run(*component);
        component->MakeDirectory();
        component->DirectoryName = QStringLiteral("finns inte");
        component->ChangeDirectory();
    }
    EXPECT_EQ(not_made, (std::vector<bool>{true, true, false}));
    EXPECT_FALSE(component->NotMade());
}

TEST_P(ComponentAtServer, CarriesOutEveryOperation) {
    component->DirectoryName = QStringLiteral("bilder");
    component->MakeDirectory();
    EXPECT_EQ(Names(), QStringList{QStringLiteral("bilder")});
    component->ChangeDirectory();
    const QByteArray bytes = Pattern(3'000'001);
    Write(Local("up.gif"), bytes);
    Put(Local("up.gif"), "up.gif");
    EXPECT_EQ(server->ReadFile("bilder/up.gif"), bytes.toStdString());

    component->SourceFileName = QStringLiteral("up.gif");
    component->DestinationFileName = QStringLiteral("ny.gif");
    component->RenameFile();
    EXPECT_EQ(Names(), QStringList{QStringLiteral("ny.gif")});
    Get("ny.gif", Local("down.gif"));
    EXPECT_EQ(Read(Local("down.gif")), bytes);

    component->SourceFileName = component->DestinationFileName = QStringLiteral("ny.gif");
    component->DeleteFile();
    EXPECT_EQ(Names(), QStringList());
    component->ChangeToParent();
    component->RemoveDirectory();
    EXPECT_EQ(Names(), QStringList());
    component->CloseConnection();

    EXPECT_TRUE(errors.empty()) << errors.front().second;
    EXPECT_EQ(connected, (std::vector{true, false}));
    EXPECT_FALSE(component->Connected());
    EXPECT_EQ(commands.last(), QStringLiteral("QUIT"));
    EXPECT_FALSE(trace.contains(QStringLiteral("PASS demo")));
    EXPECT_TRUE(trace.contains(QStringLiteral("USER demo")));
}

TEST_P(ComponentAtServer, CountsTransfersToTheExactEnd) {
    for (const std::int64_t size : {0, 1, 3'000'001}) {
        Write(Local("up"), Pattern(size));
        progress.clear();
        Put(Local("up"), "file");
        ASSERT_FALSE(progress.empty());
        EXPECT_TRUE(std::ranges::is_sorted(progress));
        EXPECT_EQ(progress.back(), size);

        progress.clear();
        Get("file", Local("down"));
        ASSERT_FALSE(progress.empty());
        EXPECT_TRUE(std::ranges::is_sorted(progress));
        EXPECT_EQ(progress.back(), size);
        EXPECT_EQ(component->StatedSize(), size);
    }
    progress.clear();
    component->ListDirectory();
    EXPECT_TRUE(progress.empty()) << "a listing is no transfer of a file";
    EXPECT_TRUE(errors.empty()) << errors.front().second;
}

TEST_P(ComponentAtServer, KeepsTheEventLoopTurningDuringALongListing) {
    constexpr int kFiles = 1000;
    for (int i = 0; i < kFiles; ++i) server->WriteFile("file" + std::to_string(1000 + i), "");
    int turns = 0;
    QTimer paint;
    QObject::connect(&paint, &QTimer::timeout, [&turns] { ++turns; });
    paint.start(0);
    QObject::connect(component.get(), &Component::DirItem, [] {
        for (const QDeadlineTimer work(std::chrono::milliseconds(1)); !work.hasExpired();) continue;
    });
    const QStringList names = Names();
    EXPECT_EQ(names.size(), kFiles);
    EXPECT_GT(turns, 20) << "a second of work in the handlers";
    EXPECT_TRUE(errors.empty()) << errors.front().second;
}

TEST_P(ComponentAtServer, RaisesWhatTheServerRefuses) {
    Write(Local("old"), "old");
    Get("missing", Local("old"));
    EXPECT_EQ(OnlyError(), 550);
    EXPECT_TRUE(errors.front().second.starts_with("Servern vägrar: 550 ")) << errors.front().second;
    EXPECT_TRUE(progress.empty());
    EXPECT_EQ(Read(Local("old")), "old");
    errors.clear();
    component->DirectoryName = QStringLiteral("missing");
    component->ChangeDirectory();
    EXPECT_EQ(OnlyError(), 550);
    EXPECT_TRUE(component->Connected());
}

TEST_P(ComponentAtServer, RaisesWhatTheDiskRefuses) {
    Put(Local("missing"), "a");
    EXPECT_EQ(OnlyError(), 53);
    EXPECT_TRUE(errors.front().second.ends_with(Local("missing").toStdString())) << errors.front().second;
    errors.clear();
    server->WriteFile("a", "a");
    Get("a", Local("missing/a"));
    EXPECT_EQ(errors.size(), 1u);
    EXPECT_TRUE(component->Connected());
    EXPECT_EQ(Names(), QStringList{QStringLiteral("a")}) << "the session goes on";
}

TEST_P(ComponentAtServer, RefusesAWrongPassword) {
    component->CloseConnection();
    connected.clear();
    trace.clear();
    component->Password = QStringLiteral("wrong");
    component->Connect();
    EXPECT_EQ(OnlyError(), 530) << trace.join(u'\n').toStdString();
    EXPECT_FALSE(component->Connected());
    EXPECT_TRUE(connected.empty());
}

TEST_P(ComponentAtServer, AbortsADownloadAndKeepsTheSession) {
    server->WriteFile("big", "");
    std::filesystem::resize_file(server->Home() / "big", 4 * kGigabyte);
    Write(Local("big"), "old");
    std::int64_t at_abort = -1;
    QObject::connect(component.get(), &Component::Progress, [&](std::int64_t bytes) {
        EXPECT_EQ(at_abort, -1) << "nothing is counted after the abort";
        at_abort = bytes;
        component->AbortTransfer();
    });
    Get("big", Local("big"));
    EXPECT_GT(at_abort, 0);
    EXPECT_LT(at_abort, 4 * kGigabyte);
    EXPECT_EQ(OnlyError(), 10004);
    EXPECT_EQ(Read(Local("big")), "old");
    EXPECT_TRUE(component->Connected());
    EXPECT_EQ(Names(), QStringList{QStringLiteral("big")});
}

TEST_P(ComponentAtServer, ShutsDownInTheMiddleOfADownload) {
    server->WriteFile("big", "");
    std::filesystem::resize_file(server->Home() / "big", 4 * kGigabyte);
    QObject::connect(component.get(), &Component::Progress, [this] { component->Shutdown(); });
    Get("big", Local("big"));
    EXPECT_EQ(OnlyError(), 10004);
    EXPECT_FALSE(component->Connected());
    EXPECT_EQ(QDir(local.path()).entryList(QDir::Files | QDir::Hidden), QStringList()) << "no litter";
}

TEST_P(ComponentAtServer, MayBeDestroyedByAnyEvent) {
    server->WriteFile("a", "a");
    for (int event = 0;; ++event) {
        component = std::make_unique<Component>();
        component->UserName = component->Password = QStringLiteral("demo");
        component->ModeFlagA = true;
        int seen = 0;
        const auto destroy_at = [&, event] {
            if (seen++ == event) component.reset();
        };
        QObject::connect(component.get(), &Component::Debug, destroy_at);
        QObject::connect(component.get(), &Component::DirItem, destroy_at);
        QObject::connect(component.get(), &Component::Progress, destroy_at);
        QObject::connect(component.get(), &Component::ConnectedChanged, destroy_at);
        Connect(server->HostField());
        if (component) component->ListDirectory();
        if (component) Get("a", Local("a"));
        if (!component) continue;
        EXPECT_GT(event, 10);
        break;
    }
}

QString Numbered(int number) {
    return QStringLiteral("f%1").arg(number);
}

TEST_P(ComponentAtServer, SendsTheFilesOfARun) {
    constexpr int kFiles = 40;
    for (int i = 0; i < kFiles; ++i) Write(Local(qPrintable(Numbered(i))), Pattern(100 * i));
    {
        const TransferRun run(*component);
        for (int i = 0; i < kFiles; ++i) {
            progress.clear();
            Put(Local(qPrintable(Numbered(i))), qPrintable(Numbered(i)));
            EXPECT_EQ(progress.empty() ? -1 : progress.back(), 100 * i) << "the file counts as moved";
        }
    }
    EXPECT_FALSE(component->Busy());
    EXPECT_TRUE(errors.empty()) << errors.front().second;
    for (int i = 0; i < kFiles; ++i)
        EXPECT_TRUE(server->ReadFile(Numbered(i).toStdString()) == Pattern(100 * i).toStdString()) << i;
}

TEST_P(ComponentAtServer, FetchesTheFilesOfARun) {
    constexpr int kFiles = 20;
    for (int i = 0; i < kFiles; ++i) server->WriteFile(Numbered(i).toStdString(), Pattern(i).toStdString());
    {
        const TransferRun run(*component);
        for (int i = 0; i < kFiles; ++i) {
            component->ExpectedSize = i;
            Get(qPrintable(Numbered(i)), Local(qPrintable(Numbered(i))));
            EXPECT_EQ(component->ExpectedSize, std::nullopt);
        }
    }
    EXPECT_TRUE(errors.empty()) << errors.front().second;
    for (int i = 0; i < kFiles; ++i) EXPECT_EQ(Read(Local(qPrintable(Numbered(i)))), Pattern(i));
}

TEST_P(ComponentAtServer, RaisesWhatIsRefusedInARun) {
    Write(Local("here"), "bytes");
    {
        const TransferRun run(*component);
        for (int i = 0; i < 30; ++i) {
            Put(Local("here"), "no/such/folder/file");
            Put(Local("gone"), "file");
        }
    }
    const auto gone = std::ranges::count(errors, 53, &std::pair<std::int32_t, std::string>::first);
    const auto refused = std::ranges::count_if(errors, [](const auto& error) { return error.first >= 500; });
    EXPECT_EQ(gone, 30);
    EXPECT_EQ(refused, 30);
    EXPECT_EQ(errors.size(), 60U);
    EXPECT_EQ(Names(), QStringList());
}

TEST_P(ComponentAtServer, AbortsWhatARunHasUnderWay) {
    Write(Local("a"), Pattern(200'000));
    std::size_t cancelled = 0;
    for (int at = 1; at <= 8; ++at) {
        errors.clear();
        int stores = 0;
        const auto counting =
            QObject::connect(component.get(), &Component::CommandSent, [&](const QString& line) {
                if (line.startsWith(u"STOR") && ++stores == at) component->AbortTransfer();
            });
        {
            const TransferRun run(*component);
            for (int i = 0; i < 12; ++i) Put(Local("a"), qPrintable(Numbered(i)));
        }
        QObject::disconnect(counting);
        for (const auto& [number, text] : errors) EXPECT_EQ(number, 10004) << text;
        cancelled += errors.size();
        EXPECT_TRUE(component->Connected());
        Put(Local("a"), "after");
        EXPECT_TRUE(server->ReadFile("after") == Pattern(200'000).toStdString());
    }
    EXPECT_GT(cancelled, 0U);
}

TEST_P(ComponentAtServer, ShutsDownInTheMiddleOfARun) {
    Write(Local("a"), Pattern(20'000));
    When(QStringLiteral("STOR"), [this] { component->Shutdown(); });
    {
        const TransferRun run(*component);
        for (int i = 0; i < 20; ++i) Put(Local("a"), qPrintable(Numbered(i)));
    }
    EXPECT_FALSE(component->Connected());
    EXPECT_LE(errors.size(), 1U) << "what is not begun any more does not fail";
}

TEST_P(ComponentAtServer, MayBeDestroyedInTheMiddleOfARun) {
    Write(Local("a"), Pattern(20'000));
    for (int event = 0; event < 60; event += 3) {
        component = std::make_unique<Component>();
        component->UserName = component->Password = QStringLiteral("demo");
        component->ModeFlagA = component->ModeFlagB = true;
        Connect(server->HostField());
        QObject::connect(component.get(), &Component::Debug, [this, event, seen = 0]() mutable {
            if (seen++ == event) component.reset();
        });
        const TransferRun run(*component);
        for (int i = 0; i < 8 && component; ++i) Put(Local("a"), qPrintable(Numbered(i)));
    }
}

TEST_P(ComponentAtServer, MayBeDestroyedBetweenTheCallsOfARun) {
    Write(Local("a"), "bytes");
    const TransferRun run(*component);
    bool between = false;
    QObject::connect(component.get(), &Component::Debug, [&] {
        if (between) component.reset();
    });
    for (int i = 0; component && i < 500; ++i) {
        Put(Local("a"), qPrintable(Numbered(i)));
        between = true;
        for (const QDeadlineTimer soon(20); component && !soon.hasExpired();)
            QCoreApplication::processEvents();
        between = false;
    }
    EXPECT_FALSE(component) << "nothing was told between two calls";
}

TEST_P(ComponentAtServer, KeepsTheBytesOfLegacyNames) {
    server.emplace(GetParam(), ftp_test::ServerOptions{.utf8 = false});
    Connect(server->HostField());
    server->WriteFile("\xE5\xE4\xF6.htm", "hej");
    EXPECT_EQ(Names(), QStringList{QStringLiteral("åäö.htm")});
    Get("åäö.htm", Local("a"));
    EXPECT_EQ(Read(Local("a")), "hej");
    Put(Local("a"), "smörgås.htm");
    EXPECT_EQ(server->ReadFile("sm\xF6rg\xE5s.htm"), "hej");
    EXPECT_TRUE(errors.empty()) << errors.front().second;
}

}  // namespace
}  // namespace ftp
