#include "ftp/engine/session/files.h"

#include "ftp/engine/wire/directory.h"

namespace ftp {
namespace {

Task<> DoNamed(Session& session, std::string_view verb, const std::string& name) {
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (name.empty()) co_return Fail(FailureKind::BadArgument);
    co_return co_await session.Do(verb, name);
}

/// More would leave in one packet than a server need take in before it has to be heard.
constexpr std::size_t kMostPutOff = 16;

/// What leads from folder to folder: in a run it waits for what follows it.
Task<> Step(Session& session, std::string_view verb, const std::string& name) {
    session.directory.reset();
    if (!session.in_run || session.habits.one_at_a_time) co_return co_await DoNamed(session, verb, name);
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (name.empty()) co_return Fail(FailureKind::BadArgument);
    auto command = MakeCommand(verb, name);
    if (!command) co_return Fail(command.error());
    session.put_off.push_back(std::move(*command));
    if (session.put_off.size() < kMostPutOff) co_return Result<>{};
    co_return co_await session.CatchUp();
}

}  // namespace

Task<> ChangeDirectoryTo(Session& session, std::string name) {
    co_return co_await Step(session, "CWD", name);
}

Task<> ChangeToParentDirectory(Session& session) {
    const std::string parent = "..";  // not CDUP: every server knows it as a name, some only so
    co_return co_await Step(session, "CWD", parent);
}

Task<> MakeDirectoryNamed(Session& session, std::string name) {
    co_return co_await Step(session, "MKD", name);
}

Task<std::string> CurrentDirectory(Session& session) {
    if (session.directory) co_return *session.directory;
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    const auto reply = co_await session.CatchUp(*MakeCommand("PWD"));
    if (!reply) co_return Fail(reply.error());
    session.directory = ParseDirectory(*reply).value_or(std::string());
    co_return *session.directory;
}

Task<> RemoveDirectoryNamed(Session& session, std::string name) {
    co_return co_await DoNamed(session, "RMD", name);
}

Task<> DeleteFileNamed(Session& session, std::string name) {
    co_return co_await DoNamed(session, "DELE", name);
}

Task<> Rename(Session& session, std::string from, std::string to) {
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (from.empty() || to.empty()) co_return Fail(FailureKind::BadArgument);
    const auto possible =
        MakeCommand("RNTO", to);  // a server that waits for the new name is not to be let down
    if (!possible) co_return Fail(possible.error());
    const auto source = co_await session.Ask("RNFR", from);
    if (!source) co_return Fail(source.error());
    if (!source->Intermediate()) co_return Fail(RefusalOf(*source));  // 350 is the only way on
    co_return co_await session.Do("RNTO", to);
}

}  // namespace ftp
