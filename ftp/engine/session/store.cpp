#include "ftp/engine/session/store.h"

namespace ftp {
namespace {

constexpr std::size_t kPiece = 4 * 1024 * 1024;  // at most this much for one call of sendfile

Task<> Push(Transfer& transfer, SourceFile& source, std::int64_t& total) {
    for (;;) {
        const auto sent = co_await transfer.Data().Send(source, kPiece);
        if (!sent) co_return Fail(sent.error());
        if (*sent == 0) break;
        transfer.Moved(total += static_cast<std::int64_t>(*sent));
    }
    // A file that was cut short meanwhile must not become a whole file on the server.
    if (total < source.Size()) co_return Fail(FailureKind::LocalOther);
    co_return co_await transfer.Data().EndWriting();
}

}  // namespace

Task<> StoreFile(Session& session, TransferMode mode, std::string local_path, std::string remote) {
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (remote.empty()) co_return Fail(FailureKind::BadArgument);
    const auto command = MakeCommand("STOR", remote);
    if (!command) co_return Fail(command.error());
    for (;;) {
        auto source = session.files.OpenSource(local_path);
        if (!source) co_return Fail(source.error());
        std::int64_t total = 0;
        Transfer transfer(session, mode);
        transfer.StateSize((*source)->Size());
        auto moved = co_await transfer.Start(*command);
        if (moved) moved = co_await Push(transfer, **source, total);
        auto outcome = co_await transfer.Finish(std::move(moved));
        if (transfer.Retreat(outcome)) continue;
        if (outcome) session.events.Moved(total);
        co_return outcome;
    }
}

}  // namespace ftp
