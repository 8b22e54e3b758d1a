#include "ftp/engine/session/store.h"

#include "ftp/engine/session/check.h"
#include "ftp/engine/session/tries.h"

namespace ftp {
namespace {

constexpr std::int64_t kLarge = 256 * 1024;      // bytes: in a run, a smaller file is soon sent again
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

/// A file on its way up, over as many tries as it takes.
class Upload {
 public:
    Upload(Session& session, TransferMode mode, std::string local_path, std::string remote, std::string label)
        : session_(session),
          mode_(mode),
          local_path_(std::move(local_path)),
          remote_(std::move(remote)),
          label_(std::move(label)) {}

    Task<> Run() {
        Tries tries(session_);
        for (;;) {
            auto outcome = co_await Attempt();
            if (again_ && session_.called_off) co_return Fail(FailureKind::Cancelled);
            if (again_) continue;
            if (outcome || !IsWorthAnother(tries, outcome.error())) co_return outcome;
            const auto ready = co_await PrepareNext(tries, outcome.error());
            if (!ready) co_return ready;
        }
    }

 private:
    /// From the offset on (APPE), or all of it (STOR).
    Task<> Attempt() {
        const bool resumes = offset_ > 0;
        begun_ = again_ = false;
        const auto placed = PlaceSource();
        if (!placed) co_return placed;
        auto command = MakeCommand(resumes ? "APPE" : "STOR", remote_);
        if (!command) co_return Fail(command.error());

        sent_ = offset_;
        Transfer transfer(session_, mode_, offset_);
        transfer.StateSize(size_);
        std::string size_of;
        if (!knows_before_ && (!session_.in_run || size_ >= kLarge)) size_of = remote_;
        auto moved = co_await transfer.Start(std::move(*command), size_of);
        if (transfer.HasAskedSize() && !knows_before_) before_ = transfer.AskedSize();
        knows_before_ |= transfer.HasAskedSize();
        if (moved) moved = co_await Push(transfer, *source_, sent_);
        auto outcome = co_await transfer.Finish(std::move(moved));
        begun_ = transfer.Begun();
        const bool not_appended = resumes && !begun_ && !outcome && outcome.error().code / 100 == 5;
        again_ = transfer.Retreat(outcome) || not_appended;
        if (again_) offset_ = 0;
        if (again_ || !outcome) co_return outcome;
        session_.events.Moved(sent_);
        co_return co_await Check();
    }

    /// The same file for every try, whatever has its name by then.
    Result<> PlaceSource() {
        if (source_) return source_->Seek(offset_);
        auto source = session_.files.OpenSource(local_path_);
        if (!source) return Fail(source.error());
        source_ = std::move(*source);
        size_ = source_->Size();
        return {};
    }

    /// Whether the server has kept what it has confirmed; in a run that shows with what follows.
    Task<> Check() {
        if (!mode_.image || !CanCheck(session_)) co_return Result<>{};
        const bool later = session_.in_run && !session_.habits.one_at_a_time && offset_ == 0;
        if (!later) co_return co_await CheckNow(session_, remote_, sent_);
        session_.unchecked.push_back({.remote = remote_, .bytes = sent_, .label = label_});
        co_return Result<>{};
    }

    bool IsWorthAnother(Tries& tries, const Failure& failure) const {
        if (failure.kind == FailureKind::NotKept) return offset_ > 0;  // what was there did not fit together
        return tries.IsWorth(failure, begun_ && sent_ > offset_);
    }

    /// Whether the server has no more of the file than before this try, which was not the first: its disk is
    /// full, and neither a pause nor a further try helps.
    asio::awaitable<bool> GotNoFurther(Tries& tries) {
        if (!tries.Begun() || !session_.Alive() || !mode_.image || !CanCheck(session_)) co_return false;
        const auto reply = co_await tries.AskSize(remote_);
        if (!reply) co_return false;
        const auto kept = ParseSizeReply(*reply);
        co_return kept&&* kept <= offset_;
    }

    Task<> PrepareNext(Tries& tries, Failure why) {
        const bool misfits = why.kind == FailureKind::NotKept;
        const bool in_vain = co_await GotNoFurther(tries);
        if (in_vain && !misfits) co_return Fail(std::move(why));
        for (;;) {
            const auto ready = co_await tries.Next(why);
            if (!ready) co_return ready;
            offset_ = 0;
            if (misfits || !mode_.image || !CanCheck(session_)) co_return Result<>{};
            const auto reply = co_await tries.AskSize(remote_);
            if (!reply && !tries.IsWorth(reply.error(), true)) co_return Fail(reply.error());
            if (!reply) why = reply.error();
            if (!reply) continue;
            // More than was sent is another file. The size from before may be that of the old file, which
            // some servers keep until the new one is whole.
            const auto kept = ParseSizeReply(*reply);
            const bool ours = knows_before_ && kept && kept != before_ && *kept <= sent_;
            const bool turned_down = ours && kept == size_ && why.kind == FailureKind::Refused;
            if (turned_down) co_return Fail(std::move(why));
            if (ours) offset_ = *kept;  // also when that is all: it is still to be confirmed
            co_return Result<>{};
        }
    }

    Session& session_;
    const TransferMode mode_;
    const std::string local_path_, remote_, label_;
    std::int64_t offset_ = 0;  // what the server has of the tries before
    std::int64_t sent_ = 0;    // up to here, this try
    std::int64_t size_ = 0;    // of the file
    bool begun_ = false;       // the server has said that it takes the file
    bool again_ = false;       // at once, and it does not count
    std::unique_ptr<SourceFile> source_;
    std::optional<std::int64_t> before_;  // the size of what had its name on the server before
    bool knows_before_ = false;
};

}  // namespace

Task<> StoreFile(Session& session, TransferMode mode, std::string local_path, std::string remote,
                 std::string label) {
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (remote.empty()) co_return Fail(FailureKind::BadArgument);
    const auto possible = MakeCommand("STOR", remote);
    if (!possible) co_return Fail(possible.error());
    Upload upload(session, mode, std::move(local_path), std::move(remote), std::move(label));
    co_return co_await upload.Run();
}

}  // namespace ftp
