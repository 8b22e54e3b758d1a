#include "ftp/engine/session/list.h"

#include "ftp/engine/wire/listing_lines.h"

namespace ftp {
namespace {

constexpr std::size_t kBuffer = 64 * 1024;

Task<> Pull(Session& session, Transfer& transfer, ListingLines& cutter) {
    const auto buffer = std::make_unique_for_overwrite<char[]>(kBuffer);
    for (std::int64_t total = 0;;) {
        const auto got = co_await transfer.Data().Read(asio::buffer(buffer.get(), kBuffer));
        if (!got) co_return Fail(got.error());
        std::vector<std::string> lines;
        if (*got == 0) {
            cutter.Finish(lines);
        } else {
            cutter.Feed({buffer.get(), *got}, lines);
        }
        if (!lines.empty()) co_await session.events.Listed(std::move(lines));
        if (*got == 0) break;
        transfer.Moved(total += static_cast<std::int64_t>(*got));
    }
    transfer.Data().Close();  // proftpd says how it went only when our end is closed, too
    co_return Result<>{};
}

}  // namespace

Task<> ListDirectory(Session& session, TransferMode mode) {
    ListingLines cutter;
    Transfer transfer(session, mode);
    auto moved = co_await transfer.Start(*MakeCommand("LIST"));
    if (moved) moved = co_await Pull(session, transfer, cutter);
    auto outcome = co_await transfer.Finish(std::move(moved));
    if (cutter.Dropped() > 0) session.events.Trouble(Failure{FailureKind::Protocol, 0, {}});
    co_return outcome;
}

}  // namespace ftp
