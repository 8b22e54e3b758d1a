#include "ftp/engine/session/retrieve.h"

#include "ftp/engine/session/tries.h"

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

/// A file on its way down, over as many tries as it takes.
class Download {
 public:
    Download(Session& session, TransferMode mode, std::string remote, std::string local_path)
        : session_(session), mode_(mode), remote_(std::move(remote)), local_path_(std::move(local_path)) {}

    Task<> Run() {
        Tries tries(session_);
        for (;;) {
            auto outcome = co_await Attempt();
            if (again_ && session_.called_off) co_return Fail(FailureKind::Cancelled);
            if (again_) continue;
            if (outcome) co_return target_->Commit();
            if (!tries.IsWorth(outcome.error(), total_ > offset_)) co_return outcome;
            const auto ready = co_await tries.Next(outcome.error());
            if (!ready) co_return ready;
            // Without a size nobody could tell whether it still is the same file.
            offset_ = mode_.image && size_ && !mixed_up_ && total_ <= *size_ ? total_ : 0;
        }
    }

 private:
    /// From the offset on (REST), or all of it into a fresh file.
    Task<> Attempt() {
        const bool resumes = offset_ > 0;
        again_ = mixed_up_ = false;
        if (!resumes) {
            target_.reset();
            auto target = session_.files.CreateTarget(
                local_path_);  // first: a full or closed disk costs the server nothing
            if (!target) co_return Fail(target.error());
            target_ = std::move(*target);
        }
        auto command = MakeCommand("RETR", remote_);
        if (!command) co_return Fail(command.error());

        total_ = offset_;
        Transfer transfer(session_, mode_, offset_);
        if (resumes) transfer.Continue(*size_);
        auto moved = co_await transfer.Start(std::move(*command), remote_);
        if (moved) moved = co_await Pull(transfer, *target_, total_);
        auto outcome = co_await transfer.Finish(std::move(moved));
        const bool not_continued = resumes && !outcome && outcome.error().code / 100 == 5;
        again_ = transfer.Retreat(outcome) || transfer.CannotContinue() || not_continued;
        if (again_) offset_ = 0;
        if (again_) co_return outcome;
        size_ = transfer.AskedSize();
        outcome = Judge(std::move(outcome), transfer.StatedSize());
        if (outcome && size_ && total_ > *size_) outcome = co_await HasGrown();
        co_return outcome;
    }

    /// More than was stated: a file that has grown meanwhile, or one with something else in front of it.
    Task<> HasGrown() {
        const auto reply = co_await session_.Ask("SIZE", remote_);
        if (!reply) co_return Fail(reply.error());
        if (ParseSizeReply(*reply).value_or(0) < total_) co_return Fail(FailureKind::CutShort, remote_);
        co_return Result<>{};
    }

    /// The stated size decides where the data have ended without a word; a server that has confirmed them
    /// said how it went.
    Result<> Judge(Result<> outcome, std::optional<std::int64_t> stated) {
        const bool silent_end = !outcome && outcome.error().kind == FailureKind::CutShort;
        if (silent_end && stated && total_ >= *stated) outcome = Result<>{};
        if (!outcome) return outcome;
        mixed_up_ = offset_ > 0 && stated && total_ > *stated;  // it has begun at the beginning all the same
        if (mixed_up_ || total_ < stated.value_or(0)) return Fail(FailureKind::CutShort, remote_);
        return outcome;
    }

    Session& session_;
    const TransferMode mode_;
    const std::string remote_, local_path_;
    std::unique_ptr<TargetFile> target_;
    std::int64_t offset_ = 0;           // what the tries before have fetched
    std::int64_t total_ = 0;            // what is in the file
    std::optional<std::int64_t> size_;  // what SIZE has said
    bool again_ = false;                // at once, and it does not count
    bool mixed_up_ = false;             // the parts do not fit together
};

}  // namespace

Task<> RetrieveFile(Session& session, TransferMode mode, std::string remote, std::string local_path) {
    if (!session.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    if (remote.empty()) co_return Fail(FailureKind::BadArgument);
    const auto possible = MakeCommand("RETR", remote);
    if (!possible) co_return Fail(possible.error());
    Download download(session, mode, std::move(remote), std::move(local_path));
    co_return co_await download.Run();
}

}  // namespace ftp
