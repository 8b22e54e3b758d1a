#include "tests/ftp/faults/stage.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTimer>
#include <algorithm>
#include <filesystem>

namespace ftp {
namespace {

namespace fs = std::filesystem;
using namespace ftp_test;

constexpr auto kTime = std::chrono::seconds(20);  // every deadline a few times over, on a busy machine
const std::string kOld = "the file that was there before";

QByteArray Contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

void Write(const QString& path, const std::string& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes.data(), static_cast<qint64>(bytes.size()));
}

const QString kFolder = QStringLiteral("rum/valt");  // so that "../.." is still in our room

bool IsOurs(const std::string& command) {
    static const QRegularExpression ours(QRegularExpression::anchoredPattern(QStringLiteral(
        "USER demo|PASS hemligt-ord|FEAT|OPTS UTF8 ON|TYPE [IA]|NOOP|ABOR|QUIT|PWD|EPSV|PASV|LIST"
        "|AUTH TLS|PBSZ 0|PROT P|EPRT \\|[12]\\|[0-9.:a-f]*\\|[0-9]*\\||PORT [0-9,]*|REST [0-9]*"
        "|(SIZE|RETR|MDTM) ny\\.htm|(SIZE|STOR|APPE) upp\\.htm|RNFR ett\\.htm|RNTO annat\\.htm|DELE "
        "bort\\.htm"
        "|(CWD|MKD|RMD) bilder|CWD \\.\\.|CWD /")));
    return ours.match(QString::fromLatin1(command.data(), static_cast<qsizetype>(command.size()))).hasMatch();
}

bool IsPlain(QChar c) {
    return c.category() != QChar::Other_Control && c.category() != QChar::Other_Format;
}

}  // namespace

std::string Pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 31 + (i >> 8) * 7);
    return bytes;
}

std::string NameOf(Work work) {
    static const char* const names[] = {"Connect", "List", "Enter",  "Get",   "Put", "Rename",
                                        "Delete",  "Make", "Remove", "Leave", "Quit"};
    return names[static_cast<int>(work)];
}

FaultStage::FaultStage(const std::string& address)
    : server(address), whole(Pattern(3000)), source(Pattern(5000)) {
    QDir(room_.path()).mkpath(kFolder);
    Write(Local(QStringLiteral("gammal.htm")), kOld);
    UseDeadlines(kPatient);
}

void FaultStage::UseDeadlines(const Deadlines& deadlines) {
    component = std::make_unique<Component>(nullptr, deadlines);
    Record(*component);
    component->ModeFlagA = component->ModeFlagB = true;
    component->HostName = QString::fromStdString(server.HostField());
    component->UserName = QStringLiteral("demo");
    component->Password = QString::fromUtf8(kPassword);
}

QString FaultStage::Local(const QString& name) const {
    return room_.filePath(kFolder + u'/') + name;
}

std::vector<std::string> FaultStage::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(Local(QString()).toStdString()))
        names.push_back(entry.path().filename().native());
    std::ranges::sort(names);
    return names;
}

std::vector<std::string> FaultStage::NamesOutside() const {
    const std::string chosen = room_.filePath(kFolder).toStdString();
    std::vector<std::string> names;
    for (auto each = fs::recursive_directory_iterator(room_.path().toStdString());
         each != fs::recursive_directory_iterator(); ++each) {
        const bool leads_there = chosen.starts_with(each->path().native());
        if (!leads_there) names.push_back(each->path().native());
        if (each->path() == chosen) each.disable_recursion_pending();
    }
    return names;
}

std::string FaultStage::Told() const {
    std::string all = trace.join(u'\n').toStdString();
    for (const auto& [number, text] : errors) all += "\nerror " + std::to_string(number) + ": " + text;
    return all;
}

Script FaultStage::Counted(Script script) {
    script.insert(script.begin(), [this](ScriptedSession&) {
        ++struck_;
        return Next::Go;
    });
    return script;
}

void FaultStage::StrikeNext(const std::string& prefix, const Script& script) {
    server.AtNext(prefix, Counted(script));
}

void FaultStage::StrikeEach(const std::string& prefix, const Script& script) {
    server.At(prefix, Counted(script));
}

bool FaultStage::DoInSession(Work work) {
    if (!component->Connected()) {
        EXPECT_TRUE(Do(Work::Connect)) << "the session is over, so a new one must be possible\n" << Told();
    }
    return Do(work);
}

bool FaultStage::Do(Work work) {
    SCOPED_TRACE(NameOf(work));
    errors.clear();
    trace.clear();
    commands.clear();
    listing.clear();
    Prepare(work);
    QTimer watchdog;
    QObject::connect(&watchdog, &QTimer::timeout, component.get(), [this] {
        ADD_FAILURE() << "it takes too long\n" << Told();
        component->Shutdown();
    });
    watchdog.start(kTime);
    Perform(work);
    const bool succeeded = errors.empty();
    if (work == Work::Connect && !succeeded) {
        EXPECT_FALSE(component->Connected()) << Told();
    }
    if (work == Work::Quit) {
        EXPECT_FALSE(component->Connected()) << Told();
    }
    CheckFolder(work, succeeded);
    if (succeeded && !lies) CheckEffect(work);
    CheckCommands();
    CheckWords();
    return succeeded;
}

void FaultStage::Prepare(Work work) {
    for (const char* name : {"ett.htm", "bort.htm"}) server.AddFile(name, "bytes");
    for (const char* name : {"annat.htm", "upp.htm"}) server.RemoveFile(name);
    server.AddFile("ny.htm", whole);
    Write(Local(QStringLiteral("egen.htm")), source);
    if (work == Work::Get) Write(Local(QStringLiteral("gammal.htm")), kOld);
}

void FaultStage::Perform(Work work) {
    Component& it = *component;
    const auto names = [&it](const QString& from, const QString& to) {
        it.SourceFileName = from;
        it.DestinationFileName = to;
    };
    it.DirectoryName = QStringLiteral("bilder");
    switch (work) {
        case Work::Connect:
            return it.Connect();
        case Work::List:
            return it.ListDirectory();
        case Work::Enter:
            return it.ChangeDirectory();
        case Work::Leave:
            return it.ChangeToParent();
        case Work::Make:
            return it.MakeDirectory();
        case Work::Remove:
            return it.RemoveDirectory();
        case Work::Quit:
            return it.CloseConnection();
        case Work::Get:
            names(QStringLiteral("ny.htm"), Local(QStringLiteral("gammal.htm")));
            return it.GetFile();
        case Work::Put:
            names(Local(QStringLiteral("egen.htm")), QStringLiteral("upp.htm"));
            return it.PutFile();
        case Work::Rename:
            names(QStringLiteral("ett.htm"), QStringLiteral("annat.htm"));
            return it.RenameFile();
        case Work::Delete:
            names(QStringLiteral("bort.htm"), QStringLiteral("bort.htm"));
            return it.DeleteFile();
    }
}

void FaultStage::CheckFolder(Work work, bool succeeded) {
    const QByteArray now = Contents(Local(QStringLiteral("gammal.htm")));
    if (work == Work::Get) {
        EXPECT_TRUE(now == QByteArray::fromStdString(succeeded ? whole : kOld))
            << now.size() << " bytes, succeeded: " << succeeded << "\n"
            << Told();
    }
    EXPECT_TRUE(Contents(Local(QStringLiteral("egen.htm"))) == QByteArray::fromStdString(source));
    EXPECT_EQ(Names(), (std::vector<std::string>{"egen.htm", "gammal.htm"}));
    EXPECT_EQ(NamesOutside(), std::vector<std::string>());
}

void FaultStage::CheckEffect(Work work) {
    const auto listed = [this](const QString& name) {
        return std::ranges::any_of(listing, [&](const QString& line) { return line.endsWith(u' ' + name); });
    };
    if (work == Work::List) {
        EXPECT_TRUE(listed(QStringLiteral("ny.htm"))) << Told();
    }
    if (work == Work::Put) {
        EXPECT_TRUE(server.File("upp.htm") == source) << Told();
    }
    if (work == Work::Delete) {
        EXPECT_EQ(server.File("bort.htm"), std::nullopt) << Told();
    }
    if (work == Work::Rename) {
        EXPECT_EQ(server.File("ett.htm"), std::nullopt) << Told();
        EXPECT_EQ(server.File("annat.htm"), "bytes") << Told();
    }
}

void FaultStage::CheckCommands() {
    for (const std::string& command : server.Commands())
        EXPECT_TRUE(IsOurs(command) || std::ranges::count(expected, command) > 0)
            << "the server has received: " << command;
}

void FaultStage::CheckWords() {
    QStringList words = trace + commands + listing;
    for (const auto& [number, text] : errors) words += QString::fromStdString(text);
    for (const QString& line : words) {
        EXPECT_FALSE(line.contains(QString::fromUtf8(kPassword))) << line.toStdString();
        EXPECT_TRUE(std::ranges::all_of(line, IsPlain)) << line.toStdString();
    }
    for (const auto& [number, text] : errors) {
        EXPECT_GT(number, 0);
        EXPECT_FALSE(text.empty());
    }
}

}  // namespace ftp
