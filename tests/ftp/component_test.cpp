// The component by itself, and against a server that never says a word.

#include "ftp/component.h"

#include <gtest/gtest.h>

#include <QEvent>
#include <QTimer>

#include "ftp/operation_gate.h"
#include "tests/ftp/component_fixture.h"
#include "tests/support/scripted_server.h"

namespace ftp {
namespace {

using ftp_test::ScriptedServer;

/// Takes connections and leaves them waiting.
class SilentServer : public ScriptedServer {
 public:
    SilentServer() { At(ftp_test::kConnect, {ftp_test::Stall()}); }
};

class Receiver : public QObject {
 public:
    int presses = 0;

    bool event(QEvent* event) override {
        if (event->type() == QEvent::MouseButtonPress) ++presses;
        return true;
    }
};

using Operation = void (Component::*)();
constexpr Operation kNeedsSession[] = {
    &Component::ListDirectory, &Component::ChangeDirectory, &Component::ChangeToParent,
    &Component::MakeDirectory, &Component::RemoveDirectory, &Component::DeleteFile,
    &Component::RenameFile,    &Component::GetFile,         &Component::PutFile,
};

TEST_F(ComponentTest, SaysThatThereIsNoSession) {
    component->SourceFileName = QStringLiteral("a.htm");
    component->DestinationFileName = QStringLiteral("a.htm");
    component->DirectoryName = QStringLiteral("a");
    for (const Operation operation : kNeedsSession) {
        errors.clear();
        busy.clear();
        (component.get()->*operation)();
        EXPECT_EQ(OnlyError(), 10057);
        EXPECT_EQ(busy, (std::vector{true, false}));
    }
    EXPECT_TRUE(trace.isEmpty());
    EXPECT_TRUE(connected.empty());
    EXPECT_TRUE(progress.empty());
}

TEST_F(ComponentTest, EndsNothingQuietly) {
    component->SetAction(9);
    component->SetAction(20);
    component->CloseConnection();
    component->AbortTransfer();
    component->SetSessionOption(1);
    EXPECT_EQ(component->SessionOption(), 1);
    EXPECT_TRUE(errors.empty());
    EXPECT_TRUE(trace.isEmpty());
    EXPECT_TRUE(connected.empty());
}

TEST_F(ComponentTest, ThrowsForAnUnknownActionOnly) {
    component->SetAction(20);
    for (const std::int16_t code : {-1, 0, 1, 8, 10, 21, 32767}) {
        try {
            component->SetAction(code);
            ADD_FAILURE() << code << " was taken";
        } catch (const UnknownAction& error) {
            EXPECT_EQ(error.Number(), 380);
            EXPECT_EQ(error.Description(),
                      QStringLiteral("Ogiltigt värde för egenskapen action: %1").arg(code));
        }
        EXPECT_EQ(component->Action(), 20);
    }
    EXPECT_TRUE(errors.empty()) << "the caller shows it";
}

TEST_F(ComponentTest, IsAsNewAfterReinitialising) {
    component->HostName = component->Account = component->DirectoryName = QStringLiteral("x");
    component->SourceFileName = component->DestinationFileName = QStringLiteral("x");
    component->SessionMode = 1;
    component->SetSessionOption(1);
    component->SetAction(20);
    for (const QString& property :
         {component->HostName, component->UserName, component->Password, component->Account,
          component->SourceFileName, component->DestinationFileName, component->DirectoryName}) {
        EXPECT_EQ(property, QString());
    }
    EXPECT_EQ(component->SessionMode, 0);
    EXPECT_EQ(component->SessionOption(), 0);
    EXPECT_FALSE(component->ModeFlagA || component->ModeFlagB);
    EXPECT_EQ(component->Action(), 20);
}

TEST_F(ComponentTest, RefusesServerNamesThatLeadElsewhere) {
    struct {
        const char* source;
        const char* destination;
        std::int32_t number;  // 10057: the path was fine
    } const rows[] = {
        {"a.htm", "C:\\webb\\a.htm", 10057},
        {"a.htm", "/webb/a.htm", 10057},
        {"a.htm", "C:\\webb\\.a", 10057},
        {"..a", "C:\\webb\\..a", 10057},
        {"../a.htm", "C:\\webb\\b.htm", 10057},  // the user has chosen another name
        {"../../x", "C:\\webb\\../../x", 75},
        {"..\\..\\x", "C:\\webb\\..\\..\\x", 75},
        {"bilder/x", "C:\\webb\\bilder/x", 75},
        {"/etc/passwd", "C:\\webb\\/etc/passwd", 75},
        {"..", "C:\\webb\\..", 75},
        {".", "C:\\webb\\.", 75},
        {"a.htm", "C:\\webb\\..", 75},
        {"a.htm", "C:\\webb\\", 75},
        {"c:evil", "C:\\webb\\c:evil", 75},
        {"C:\\x", "C:\\webb\\C:\\x", 75},
        {"10:30", "C:\\webb\\10:30", 10057},
        {"a.", "C:\\webb\\a.", 75},
        {"a ", "C:\\webb\\a ", 75},
        {"\uF05C", "C:\\webb\\\uF05C", 75},
        {"a\x01", "C:\\webb\\a\x01", 75},
        {"", "C:\\webb\\a.htm", 75},
        {"a.htm", "", 75},
    };
    component->ResolveLocalPath = [](const QString&) { return QByteArray("/nowhere/a.htm"); };
    for (const auto& row : rows) {
        errors.clear();
        component->SourceFileName = QString::fromUtf8(row.source);
        component->DestinationFileName = QString::fromUtf8(row.destination);
        component->GetFile();
        EXPECT_EQ(OnlyError(), row.number) << row.source << " -> " << row.destination;
    }
}

TEST_F(ComponentTest, RefusesLocalPathsThatAreNone) {
    component->ResolveLocalPath = [](const QString&) { return std::nullopt; };
    component->SourceFileName = QStringLiteral("Q:\\a.htm");
    component->DestinationFileName = QStringLiteral("a.htm");
    component->PutFile();
    EXPECT_EQ(OnlyError(), 75);
    EXPECT_EQ(errors.front().second, "Sökvägen leder inte till en fil: Q:\\a.htm");
    errors.clear();
    component->GetFile();
    EXPECT_EQ(OnlyError(), 75);
    EXPECT_TRUE(busy.empty());
}

TEST_F(ComponentTest, TellsWhenNobodyListens) {
    std::string host_field;
    {
        const SilentServer gone;
        host_field = gone.HostField();
    }
    Connect(host_field);
    EXPECT_EQ(OnlyError(), 10061);
    EXPECT_FALSE(component->Connected());
}

TEST_F(ComponentTest, GivesUpASilentServerAfterItsDeadline) {
    component = std::make_unique<Component>(nullptr, Deadlines{.connect = std::chrono::milliseconds(100),
                                                               .reply = std::chrono::milliseconds(100)});
    Record(*component);
    const SilentServer server;
    Connect(server.HostField());
    EXPECT_EQ(OnlyError(), 10060);
}

TEST_F(ComponentTest, CancelsAConnectUnderWay) {
    const SilentServer server;
    QTimer::singleShot(0, component.get(), [this] { component->SetAction(9); });
    Connect(server.HostField());
    EXPECT_EQ(OnlyError(), 10004);
    EXPECT_EQ(component->Action(), 9);
    EXPECT_FALSE(component->Busy());
    EXPECT_FALSE(component->Connected());
}

TEST_F(ComponentTest, ReinitialisesInTheMiddleOfAConnect) {
    const SilentServer server;
    QTimer::singleShot(0, component.get(), [this] {
        component->SetAction(20);
        EXPECT_NE(component->HostName, QString()) << "the connect still runs";
    });
    Connect(server.HostField());
    EXPECT_EQ(OnlyError(), 10004);
    EXPECT_EQ(component->HostName, QString());
    EXPECT_EQ(busy, (std::vector{true, false}));
}

TEST_F(ComponentTest, RefusesASecondOperation) {
    const SilentServer server;
    QTimer::singleShot(0, component.get(), [this] {
        EXPECT_TRUE(component->Busy());
        for (const Operation operation : kNeedsSession) (component.get()->*operation)();
        component->Connect();
        component->CloseConnection();
        component->SetSessionOption(1);
        component->SetAction(9);
    });
    Connect(server.HostField());
    ASSERT_EQ(errors.size(), std::size(kNeedsSession) + 4);
    EXPECT_EQ(errors.back().first, 10004);
    errors.pop_back();
    for (const auto& error : errors) {
        EXPECT_EQ(error, std::pair(10036, std::string("En annan åtgärd pågår redan.")));
    }
    EXPECT_EQ(component->SessionOption(), 0);
}

TEST_F(ComponentTest, KeepsInputAwayWhileItWaits) {
    const SilentServer server;
    Receiver button;
    Receiver allowed;
    OperationGate::AllowWhileBusy(&allowed);
    const auto press = [&] {
        for (Receiver* receiver : {&button, &allowed}) {
            QEvent event(QEvent::MouseButtonPress);
            QCoreApplication::sendEvent(receiver, &event);
        }
    };
    QTimer::singleShot(0, component.get(), [&] {
        press();
        component->SetAction(9);
    });
    Connect(server.HostField());
    EXPECT_EQ(button.presses, 0);
    EXPECT_EQ(allowed.presses, 1);
    press();
    EXPECT_EQ(button.presses, 1);
}

TEST_F(ComponentTest, LetsQuitEndTheMainLoopAfterTheOperation) {
    const SilentServer server;
    bool still_waiting = false;
    QTimer::singleShot(0, component.get(), [&] { Connect(server.HostField()); });
    QTimer::singleShot(0, component.get(), [&] {
        QCoreApplication::exit(7);
        QTimer::singleShot(0, component.get(), [&] {
            still_waiting = component->Busy();
            component->SetAction(9);
        });
    });
    EXPECT_EQ(QCoreApplication::exec(), 7);
    EXPECT_TRUE(still_waiting);
    EXPECT_EQ(OnlyError(), 10004);
    EXPECT_FALSE(component->Busy());
}

TEST_F(ComponentTest, ShutsDownInTheMiddleOfAnOperation) {
    const SilentServer server;
    QTimer::singleShot(0, component.get(), [this] { component->Shutdown(); });
    Connect(server.HostField());
    EXPECT_EQ(OnlyError(), 10004);

    errors.clear();
    busy.clear();
    Connect(server.HostField());
    for (const Operation operation : kNeedsSession) (component.get()->*operation)();
    component->CloseConnection();
    component->SetAction(9);
    component->SetAction(20);
    component->Shutdown();
    EXPECT_TRUE(errors.empty());
    EXPECT_TRUE(busy.empty());
}

TEST_F(ComponentTest, MayBeDestroyedInTheMiddleOfAnOperation) {
    const SilentServer server;
    QTimer::singleShot(0, [this] { component.reset(); });
    Connect(server.HostField());
    EXPECT_EQ(busy, std::vector{true});
    EXPECT_TRUE(errors.empty());
}

TEST_F(ComponentTest, MayBeDestroyedByItsOwnEvents) {
    for (const Operation operation : {&Component::ListDirectory, &Component::CloseConnection}) {
        component = std::make_unique<Component>();
        QObject::connect(component.get(), &Component::BusyChanged, [this] { component.reset(); });
        (component.get()->*operation)();
        EXPECT_EQ(component, nullptr);
    }
    component = std::make_unique<Component>();
    QObject::connect(component.get(), &Component::Error, [this] { component.reset(); });
    component->ListDirectory();
    EXPECT_EQ(component, nullptr);
}

}  // namespace
}  // namespace ftp
