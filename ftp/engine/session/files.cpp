#include "ftp/engine/session/files.h"

namespace ftp {
namespace {

Task<> DoNamed(Session& session, std::string_view verb, const std::string& name) {
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (name.empty()) co_return Fail(FailureKind::BadArgument);
    co_return co_await session.Do(verb, name);
}

/// More would leave in one packet than a server need take in before it has to be heard.
constexpr std::size_t kMostPutOff = 16;

/// In a run, what leads from folder to folder waits for what follows it.
bool MayBePutOff(const Session& session) {
    return session.in_run && !session.habits.one_at_a_time;
}

Task<> PutOff(Session& session, std::string_view verb, const std::string& name) {
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (name.empty()) co_return Fail(FailureKind::BadArgument);
    auto command = MakeCommand(verb, name);
    if (!command) co_return Fail(command.error());
    // Before this one joins them: a step that fails must not be among what is tried again.
    if (session.put_off.size() >= kMostPutOff) {
        const auto caught_up = co_await session.CatchUp();
        if (!caught_up) co_return caught_up;
    }
    session.put_off.push_back(std::move(*command));
    co_return Result<>{};
}

/// CWD, and PWD in the same packet: it is always known where the session is.
Task<> Enter(Session& session, const std::string& name) {
    if (MayBePutOff(session)) co_return co_await PutOff(session, "CWD", name);
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (name.empty()) co_return Fail(FailureKind::BadArgument);
    const auto enter = MakeCommand("CWD", name);
    if (!enter) co_return Fail(enter.error());
    std::vector<Command> commands{*enter, *MakeCommand("PWD")};
    const auto replies = co_await session.Exchange(std::move(commands));
    if (!replies) co_return Fail(replies.error());
    const Reply& entered = replies->front();
    session.TakeDirectory(entered.Completed(), replies->back());
    if (!entered.Completed()) co_return Fail(RefusalOf(entered));
    co_return Result<>{};
}

}  // namespace

Task<> ChangeDirectoryTo(Session& session, std::string name) {
    co_return co_await Enter(session, name);
}

Task<> ChangeToParentDirectory(Session& session) {
    const std::string parent = "..";  // not CDUP: every server knows it as a name, some only so
    co_return co_await Enter(session, parent);
}

Task<> MakeDirectoryNamed(Session& session, std::string name) {
    if (MayBePutOff(session)) co_return co_await PutOff(session, "MKD", name);
    co_return co_await DoNamed(session, "MKD", name);
}

Task<std::string> CurrentDirectory(Session& session) {
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    const auto caught_up = co_await session.CatchUp();
    if (!caught_up) co_return Fail(caught_up.error());
    if (!session.directory) {
        const auto reply = co_await session.Ask("PWD");
        if (!reply) co_return Fail(reply.error());
        session.TakeDirectory(false, *reply);
    }
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
