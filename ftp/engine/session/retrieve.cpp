#include "ftp/engine/session/retrieve.h"

namespace ftp {
namespace {

constexpr std::size_t kBuffer = 256 * 1024;  // stays in the second-level cache between socket and file

Task<> Pull(Transfer& transfer, TargetFile& target, std::int64_t& total) {
    const auto buffer = std::make_unique_for_overwrite<char[]>(kBuffer);
    for (;;) {
        const auto got = co_await transfer.Data().Read(asio::buffer(buffer.get(), kBuffer));
        if (!got) co_return Fail(got.error());
        if (*got == 0) break;
        auto kept = target.Append({buffer.get(), *got});
        if (!kept) co_return kept;
        transfer.Moved(total += static_cast<std::int64_t>(*got));
    }
    transfer.Data().Close();  // proftpd says how it went only when our end is closed, too
    co_return Result<>{};
}

}  // namespace

Task<> RetrieveFile(Session& session, TransferMode mode, std::string remote, std::string local_path) {
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (remote.empty()) co_return Fail(FailureKind::BadArgument);
    const auto command = MakeCommand("RETR", remote);
    if (!command) co_return Fail(command.error());
    for (;;) {
        auto target =
            session.files.CreateTarget(local_path);  // first: a full or closed disk costs the server nothing
        if (!target) co_return Fail(target.error());
        std::int64_t total = 0;
        Transfer transfer(session, mode);
        auto moved = co_await transfer.Start(*command, remote);
        if (moved) moved = co_await Pull(transfer, **target, total);
        auto outcome = co_await transfer.Finish(std::move(moved));
        if (transfer.Retreat(outcome)) continue;
        if (!outcome) co_return outcome;
        if (total < transfer.StatedSize().value_or(0)) co_return Fail(FailureKind::ConnectionLost, remote);
        co_return (*target)->Commit();
    }
}

}  // namespace ftp
