#include "ftp/engine/worker.h"

#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <asio/redirect_error.hpp>
#include <asio/steady_timer.hpp>
#include <asio/use_awaitable.hpp>
#include <exception>
#include <thread>
#include <utility>

#include "ftp/engine/lanes.h"
#include "ftp/engine/net/local_files.h"
#include "ftp/engine/net/stream.h"
#include "ftp/engine/session/check.h"
#include "ftp/engine/session/files.h"
#include "ftp/engine/session/list.h"
#include "ftp/engine/session/login.h"
#include "ftp/engine/session/quit.h"
#include "ftp/engine/session/reopen.h"
#include "ftp/engine/session/session.h"
#include "ftp/engine/wire/directory.h"

namespace ftp {
namespace {

using Clock = std::chrono::steady_clock;

/// Listing batches on the way to the other thread before the server has to wait.
constexpr int kMaxBatches = 16;

/// Bytes. From here on the line is full anyway, and a file is worth watching.
constexpr std::int64_t kLarge = 256 * 1024;
/// Fewer small files are over before a lane has logged in.
constexpr int kFilesBeforeLanes = 2;

}  // namespace

/// Everything that lives on the worker's thread.
class Worker::Core : private Events, private LaneEvents {
 public:
    Core(Sink sink, const Deadlines& deadlines, std::shared_ptr<std::atomic<std::int64_t>> bytes)
        : sink_(std::move(sink)),
          bytes_(std::move(bytes)),
          deadlines_(deadlines),
          transport_(MakeTcpTransport(io_.get_executor())),
          files_(MakeLocalFiles()),
          room_(io_),
          idle_(io_),
          idle_over_(io_),
          session_(*transport_, *files_, *this, deadlines_),
          lanes_(io_.get_executor(), *files_, deadlines_, *this),
          thread_([this] {
              BlockBrokenPipeSignal();
              io_.run();
          }) {}

    ~Core() override {
        Post([this] {
            closing_ = true;
            session_.Drop();
            lanes_.Drop();
            room_.cancel();
            EndIdling();
            work_.reset();
        });
        thread_.join();
    }

    template <class Action>
    void Post(Action action) {
        asio::post(io_, std::move(action));
    }

    void Start(Request request) { asio::co_spawn(io_, Carry(std::move(request)), asio::detached); }

    void AbortTransfer() {
        abort_wanted_ = true;
        session_.AbortTransfer();
        lanes_.Abort();
        room_.cancel();
    }
    void DropSession() {
        session_.Drop();
        lanes_.Drop();
        room_.cancel();
        if (carrying_) return;  // what runs ends by itself, and tells
        request_ = 0;
        TellWhetherConnected();
        if (idling_) return EndIdling();  // a NOOP may be under way
        session_.Forget();
        session_.dropped = closing_;
    }
    void BatchTaken() {
        --batches_;
        room_.cancel();
    }

 private:
    /// One operation, from its request to Finished. The one place that catches: what gets here is a fault of
    /// ours.
    asio::awaitable<void> Carry(Request request) {
        carrying_ = true;
        session_.dropped = closing_;
        abort_wanted_ = aside_ = session_.called_off = false;
        co_await AwaitIdleEnd();
        request_ = request.id;
        is_listing_ = std::holds_alternative<List>(request.operation);
        is_download_ = std::holds_alternative<ftp::Retrieve>(request.operation);
        keep_alive_ = request.keep_alive;
        Result<> outcome;
        try {
            outcome = co_await CarryOut(std::move(request));
        } catch (const std::exception& fault) {
            LeaveServer();
            session_.in_run = false;
            outcome = Fail(FailureKind::Protocol, fault.what());
        }
        Lose();
        if (!outcome) Trouble(outcome.error());
        session_.dropped = carrying_ = false;
        Tell(Finished{});
        request_ = 0;
        BeginIdling();
    }

    /// A connection that has ended is forgotten; what leads back stays, where anything does.
    void Lose() {
        idle_watch_.reset();
        if (session_.control && !session_.control->Open()) session_.Forget();
        if (!session_.LoggedIn() && (reopening_failed_ || !CanReopen(session_))) session_.ForgetWayBack();
        reopening_failed_ = false;
        TellWhetherConnected();
    }

    /// What needs the server finds it again where it has ended the session meanwhile.
    asio::awaitable<Result<>> CarryOut(Request request) {
        if (session_.dropped) co_return Fail(FailureKind::Cancelled);
        if (auto* connect = std::get_if<ftp::Connect>(&request.operation)) {
            const auto outcome = co_await Connect(std::move(*connect));
            if (outcome) session_.access = std::make_shared<const Access>(access_);
            co_return outcome;
        }
        const bool needs_server = NeedsServer(request.operation);
        if (needs_server) {
            const auto open = co_await OpenAgain();
            if (!open) co_return open;
        }
        session_.risk = {};
        session_.heard = has_listed_ = has_fetched_ = false;
        const Request once_more = request;
        const auto outcome = co_await CarryOutOnce(std::move(request));
        if (outcome || !needs_server || !MayRepeat(outcome.error())) co_return outcome;
        const auto open = co_await OpenAgain();
        if (!open) co_return WasLetDown(open.error()) ? outcome : open;
        co_return co_await CarryOutOnce(once_more);
    }

    bool NeedsServer(const Operation& operation) const {
        if (std::holds_alternative<ftp::EndRun>(operation))
            return !session_.put_off.empty() || !session_.unchecked.empty();
        return !std::holds_alternative<ftp::BeginRun>(operation) &&
               !std::holds_alternative<Quit>(operation) && !std::holds_alternative<Reset>(operation);
    }

    asio::awaitable<Result<>> OpenAgain() {
        if (session_.Alive() || !CanReopen(session_)) co_return Result<>{};
        const auto outcome = co_await Reopen(session_);
        reopening_failed_ = !outcome && outcome.error().kind != FailureKind::Cancelled;
        TellWhetherConnected();
        co_return outcome;
    }

    /// An operation that met a session which was dead already, and that has certainly changed nothing.
    bool MayRepeat(const Failure& failure) const {
        if (session_.Alive() || !CanReopen(session_) || CalledOff()) return false;
        if (has_listed_ || has_fetched_ || !session_.risk.None()) return false;
        const bool goodbye = failure.kind == FailureKind::Refused && failure.code == 421;
        return goodbye || (WasLetDown(failure) && !session_.heard);
    }

    /// By the network, that is, and not by what anybody said.
    static bool WasLetDown(const Failure& failure) {
        return failure.kind != FailureKind::Refused && failure.kind != FailureKind::Cancelled &&
               failure.kind != FailureKind::BadArgument && failure.kind != FailureKind::Protocol;
    }

    asio::awaitable<Result<>> CarryOutOnce(Request request) {
        const TransferMode mode{request.passive, request.image};
        Operation& operation = request.operation;
        if (auto* change = std::get_if<ChangeDirectory>(&operation)) {
            co_return co_await ChangeDirectoryTo(session_, std::move(change->name));
        }
        if (std::holds_alternative<ChangeToParent>(operation))
            co_return co_await ChangeToParentDirectory(session_);
        if (auto* make = std::get_if<MakeDirectory>(&operation)) {
            co_return co_await MakeDirectoryNamed(session_, std::move(make->name));
        }
        if (auto* get = std::get_if<Retrieve>(&operation)) {
            FileToMove file{false, std::move(get->remote), std::move(get->local_path), std::move(get->label),
                            mode};
            co_return co_await Move(std::move(file), get->size);
        }
        if (auto* put = std::get_if<Store>(&operation)) {
            FileToMove file{true, std::move(put->remote), std::move(put->local_path), std::move(put->label),
                            mode};
            const auto size = session_.in_run ? SizeOf(file.local_path) : std::nullopt;
            co_return co_await Move(std::move(file), size);
        }
        if (const auto* run = std::get_if<ftp::BeginRun>(&operation)) co_return BeginRun(run->lanes);
        if (std::holds_alternative<Reset>(operation)) {
            LeaveServer();
            co_return Result<>{};
        }
        const auto settled = co_await Settle();
        if (std::holds_alternative<ftp::EndRun>(operation)) EndRun();
        if (std::holds_alternative<Quit>(operation)) {
            co_await QuitSession(session_);
            LeaveServer();
        }
        if (!settled) co_return settled;

        if (std::holds_alternative<List>(operation)) co_return co_await ListDirectory(session_, mode);
        if (auto* remove = std::get_if<RemoveDirectory>(&operation)) {
            co_return co_await RemoveDirectoryNamed(session_, std::move(remove->name));
        }
        if (auto* file = std::get_if<DeleteFile>(&operation)) {
            co_return co_await DeleteFileNamed(session_, std::move(file->name));
        }
        if (auto* rename = std::get_if<RenameFile>(&operation)) {
            co_return co_await Rename(session_, std::move(rename->from), std::move(rename->to));
        }
        co_return Result<>{};
    }

    asio::awaitable<Result<>> Connect(ftp::Connect connect) {
        auto server = ParseHostField(connect.host_field);
        if (!server) co_return Fail(server.error());
        LeaveServer();
        access_ = {.server = std::move(*server),
                   .user = std::move(connect.user),
                   .password = std::move(connect.password),
                   .account = std::move(connect.account),
                   .had_tls = connect.had_tls,
                   .trusted = std::move(connect.trusted)};
        const auto outcome = co_await Login(session_, access_);
        access_.had_tls |= session_.Encrypted();  // no lane and no later login does with less
        co_return outcome;
    }

    Result<> BeginRun(std::size_t lanes) {
        session_.in_run = true;
        lanes_wanted_ = lanes;
        lanes_opened_ = false;
        small_files_ = 0;
        return {};
    }

    void EndRun() {
        lanes_.End();
        session_.in_run = false;
    }

    void BeginIdling() {
        if (closing_ || !session_.Alive()) return;
        wants_idle_ = idling_ = true;
        asio::co_spawn(io_, Idle(), asio::detached);
    }
    void EndIdling() {
        wants_idle_ = false;
        idle_.cancel();
    }

    /// A NOOP that has left is waited for: the next command must not meet its answer.
    asio::awaitable<void> AwaitIdleEnd() {
        EndIdling();
        asio::error_code woken;
        while (idling_) {
            idle_over_.expires_at(asio::steady_timer::time_point::max());
            co_await idle_over_.async_wait(asio::redirect_error(asio::use_awaitable, woken));
        }
    }

    /// Between two operations: sees it when the server ends the session, and keeps it from doing so.
    asio::awaitable<void> Idle() {
        while (wants_idle_ && session_.Alive()) {
            const bool silent = co_await AwaitSilence();
            if (!wants_idle_ || !session_.Alive()) break;
            if (server_left_) session_.control->Close();
            if (silent && !server_left_) co_await session_.KeepAwake();
        }
        if (!session_.dropped && session_.control && !session_.control->Open()) co_await HearOut(session_);
        if (wants_idle_) Lose();
        if (!session_.LoggedIn()) session_.Forget();
        if (!carrying_) session_.dropped = closing_;
        idling_ = false;
        idle_over_.cancel();
    }

    /// Whether nothing has happened for so long that the server may mind.
    asio::awaitable<bool> AwaitSilence() {
        server_left_ = false;
        const auto leave = [this] {
            server_left_ = true;
            idle_.cancel();
        };
        idle_watch_.emplace(
            *session_.control,
            [leave](const Reply& reply) {
                if (reply.code == 421) leave();
            },
            leave);
        asio::error_code woken;
        if (!server_left_) {
            idle_.expires_at(keep_alive_ ? Clock::now() + deadlines_.idle : Clock::time_point::max());
            co_await idle_.async_wait(asio::redirect_error(asio::use_awaitable, woken));
        }
        idle_watch_.reset();
        co_return !woken && !server_left_;
    }

    /// What a run has taken on comes to its end.
    asio::awaitable<Result<>> Settle() {
        const auto caught_up = co_await session_.CatchUp();
        co_await lanes_.Rest();
        co_await SendReturned();
        if (!session_.unchecked.empty()) {
            const auto checked = co_await CheckAll(session_);
            if (!checked) co_return checked;
        }
        session_.next_port.reset();  // is for a file; anything else would not know how to do without
        co_return caught_up;
    }

    /// Forgets the server and closes all connections to it.
    void LeaveServer() {
        session_.Forget();
        session_.ForgetWayBack();
        lanes_.Drop();
        lanes_.TakeReturned();
        lanes_opened_ = false;
        access_ = {};
    }

    bool CalledOff() const { return abort_wanted_ || session_.dropped; }

    /// Nothing is written to where another file is still being written, or has still to be.
    asio::awaitable<void> AwaitTurn(const FileToMove& file) {
        co_await lanes_.AwaitTarget(file);
        co_await SendReturned();
        if (file.remote.starts_with('/')) ForgetCheckOf(session_, file);  // goes over a lane
    }

    /// Over a lane where the file is small and one may be had, else over the session itself.
    asio::awaitable<Result<>> Move(FileToMove file, std::optional<std::int64_t> size) {
        bytes_->store(0, std::memory_order_relaxed);
        if (session_.in_run && size && *size < kLarge && LanesAreReady()) {
            const auto given = co_await Give(file);
            if (given) {
                TransferStarted(size);
                Moved(*size);
            }
            if (given || given.error().kind != FailureKind::NotConnected) co_return given;
        }
        co_await AwaitTurn(file);
        const auto caught_up = co_await session_.CatchUp();
        if (!caught_up) co_return caught_up;
        if (CalledOff()) co_return Fail(FailureKind::Cancelled);
        co_return co_await MoveOverSession(file);
    }

    /// Where a server that counts its connections has none left for the data, the lanes make room.
    asio::awaitable<Result<>> MoveOverSession(const FileToMove& file) {
        auto outcome = co_await MoveFile(session_, file);
        const bool crowded =
            !outcome && outcome.error().kind == FailureKind::Refused && outcome.error().code == 425;
        if (!crowded || CalledOff() || lanes_.None()) co_return outcome;
        lanes_wanted_ = 0;
        co_await lanes_.Leave();
        co_return co_await MoveFile(session_, file);
    }

    /// Asked for each small file of a run, the lanes are opened when there are enough of them.
    bool LanesAreReady() {
        if (lanes_wanted_ == 0 || !session_.LoggedIn() || ++small_files_ <= kFilesBeforeLanes) return false;
        if (!std::exchange(lanes_opened_, true)) {
            Access access = access_;
            access.address = transport_->PeerAddress();
            lanes_.Open(lanes_wanted_, access, session_.habits);
        }
        return lanes_.Ready();
    }

    /// Lanes have no current directory. NotConnected: no lane can take the file.
    asio::awaitable<Result<>> Give(FileToMove file) {
        // A server would end a session that is silent for minutes, while it is busy with the lanes.
        if (Clock::now() - spoken_ > deadlines_.idle) {
            const auto awake = co_await session_.Ask("NOOP");
            if (!awake) co_return Fail(awake.error());
        }
        const auto directory = co_await CurrentDirectory(session_);
        if (!directory) co_return Fail(directory.error());
        if (directory->empty()) co_return Fail(FailureKind::NotConnected);
        file.remote = Below(*directory, file.remote);
        co_await AwaitTurn(file);
        if (CalledOff()) co_return Fail(FailureKind::Cancelled);
        session_.next_port.reset();  // the server may give it to a lane
        co_return co_await lanes_.Give(std::move(file));
    }

    /// What has failed for want of a lane goes over the session itself, behind the back of the request.
    asio::awaitable<void> SendReturned() {
        aside_ = true;
        for (const FileToMove& file : lanes_.TakeReturned()) {
            Result<> outcome = Fail(FailureKind::Cancelled);
            if (!CalledOff()) outcome = co_await OpenAgain();
            if (outcome) outcome = co_await MoveOverSession(file);
            if (!outcome) LaneFailed(file, outcome.error());
        }
        aside_ = false;
    }

    std::optional<std::int64_t> SizeOf(const std::string& path) {
        const auto source = files_->OpenSource(path);
        return source ? std::optional((*source)->Size()) : std::nullopt;
    }

    void TellWhetherConnected() {
        const bool connected = session_.LoggedIn();
        const bool otherwise_safe = connected && told_tls_ != session_.tls_version;
        told_tls_ = session_.tls_version;
        if (std::exchange(connected_, connected) != connected || otherwise_safe)
            Tell(SessionChanged{connected, session_.features.utf8, session_.tls_version});
    }

    template <class What>
    void Tell(What what) {
        sink_(Notification{request_, std::move(what)});
    }

    void Sent(const std::string& line) override {
        spoken_ = Clock::now();
        Tell(CommandSent{line});
    }
    void Received(const std::string& line) override { Tell(ReplyLine{line}); }
    void TransferStarted(std::optional<std::int64_t> size) override {
        if (!is_listing_ && !aside_) Tell(ftp::TransferStarted{size});
    }
    void Moved(std::int64_t bytes) override {
        has_fetched_ |= is_download_ && bytes > 0;
        if (!aside_) bytes_->store(bytes, std::memory_order_relaxed);
    }
    void Secured(const std::string& version, const Certificate& certificate) override {
        Tell(TlsAgreed{version, certificate});
    }
    void Trouble(const Failure& failure) override { Tell(Problem{failure}); }
    void NotKept(const std::string& label, const Failure& failure) override {
        sink_({0, FileProblem{label, failure}});
    }

    void LaneSent(const std::string& line) override { sink_({0, CommandSent{line}}); }
    void LaneReceived(const std::string& line) override { sink_({0, ReplyLine{line}}); }
    void LaneFailed(const FileToMove& file, const Failure& failure) override {
        sink_({0, FileProblem{file.label, failure}});
    }

    asio::awaitable<void> Listed(std::vector<std::string> lines) override {
        while (batches_ >= kMaxBatches && !session_.Stopping()) {
            asio::error_code woken;
            room_.expires_at(asio::steady_timer::time_point::max());
            co_await room_.async_wait(asio::redirect_error(asio::use_awaitable, woken));
        }
        ++batches_;
        has_listed_ = true;
        Tell(ListingBatch{std::move(lines)});
    }

    Sink sink_;
    std::shared_ptr<std::atomic<std::int64_t>> bytes_;
    Deadlines deadlines_;
    asio::io_context io_{1};
    asio::executor_work_guard<asio::io_context::executor_type> work_{io_.get_executor()};
    std::unique_ptr<Transport> transport_;
    std::unique_ptr<LocalFiles> files_;
    asio::steady_timer room_;       // cancelled when a batch has been taken
    asio::steady_timer idle_;       // cancelled when something has happened to the idle session
    asio::steady_timer idle_over_;  // cancelled when nobody looks after it any more
    Session session_;
    std::optional<Control::Watch> idle_watch_;
    Lanes lanes_;
    Access access_;             // of the session, for its lanes
    Clock::time_point spoken_;  // when it last sent something
    std::size_t lanes_wanted_ = 0;
    bool lanes_opened_ = false;
    int small_files_ = 0;  // of the run
    bool aside_ = false;   // what moves is not the request's own file
    bool abort_wanted_ = false;
    std::uint64_t request_ = 0;
    int batches_ = 0;
    bool carrying_ = false;
    bool is_listing_ = false;
    bool has_listed_ = false;  // lines have been handed over
    bool is_download_ = false;
    bool has_fetched_ = false;       // bytes of the file
    bool reopening_failed_ = false;  // and is not tried a second time
    bool keep_alive_ = false;
    bool wants_idle_ = false;  // nothing runs or waits
    bool idling_ = false;      // somebody looks after the idle session
    bool server_left_ = false;
    bool connected_ = false;
    std::string told_tls_;  // the version that was told last
    bool closing_ = false;
    std::thread thread_;  // last: starts when all the rest is there
};

Worker::Worker(Sink sink, Deadlines deadlines)
    : bytes_(std::make_shared<std::atomic<std::int64_t>>(0)),
      core_(std::make_unique<Core>(std::move(sink), deadlines, bytes_)) {}

Worker::~Worker() = default;

void Worker::Start(Request request) {
    core_->Start(std::move(request));
}

void Worker::AbortTransfer() {
    core_->Post([core = core_.get()] { core->AbortTransfer(); });
}

void Worker::DropSession() {
    core_->Post([core = core_.get()] { core->DropSession(); });
}

void Worker::BatchTaken() {
    core_->Post([core = core_.get()] { core->BatchTaken(); });
}

}  // namespace ftp
