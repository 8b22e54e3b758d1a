#include "ftp/engine/session/files.h"

namespace ftp {
namespace {

Task<> DoNamed(Session& session, std::string_view verb, const std::string& name) {
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (name.empty()) co_return Fail(FailureKind::BadArgument);
    co_return co_await session.Do(verb, name);
}

}  // namespace

Task<> ChangeDirectoryTo(Session& session, std::string name) {
    co_return co_await DoNamed(session, "CWD", name);
}

Task<> ChangeToParentDirectory(Session& session) {
    const std::string parent = "..";  // not CDUP: every server knows it as a name, some only so
    co_return co_await DoNamed(session, "CWD", parent);
}

Task<> MakeDirectoryNamed(Session& session, std::string name) {
    co_return co_await DoNamed(session, "MKD", name);
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
