#include "ftp/engine/worker.h"

#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <exception>

#include "ftp/engine/session/files.h"
#include "ftp/engine/session/list.h"
#include "ftp/engine/session/quit.h"
#include "ftp/engine/session/reopen.h"
#include "ftp/engine/worker_core.h"

namespace ftp {
namespace {

/// Listing batches on the way to the other thread before the server has to wait.
constexpr int kMaxBatches = 16;

/// By the network, that is, and not by what anybody said.
bool WasLetDown(const Failure& failure) {
    return failure.kind != FailureKind::Refused && failure.kind != FailureKind::Cancelled &&
           failure.kind != FailureKind::BadArgument && failure.kind != FailureKind::Protocol;
}

}  // namespace

Worker::Core::Core(Sink sink, const Deadlines& deadlines, std::shared_ptr<std::atomic<std::int64_t>> bytes)
    : sink_(std::move(sink)),
      bytes_(std::move(bytes)),
      deadlines_(deadlines),
      transport_(MakeTcpTransport(io_.get_executor())),
      files_(MakeLocalFiles()),
      room_(io_),
      session_(*transport_, *files_, *this, deadlines_),
      idling_(session_, [this](bool by_itself, const std::string& fault) { IdlingEnded(by_itself, fault); }),
      lanes_(io_.get_executor(), *files_, deadlines_, *this),
      thread_([this] {
          BlockBrokenPipeSignal();
          io_.run();
      }) {}

Worker::Core::~Core() {
    Post([this] {
        closing_ = true;
        session_.Drop();
        lanes_.Drop();
        room_.cancel();
        idling_.End();
        work_.reset();
    });
    thread_.join();
}

void Worker::Core::Start(Request request) {
    asio::co_spawn(io_, Carry(std::move(request)), asio::detached);
}

void Worker::Core::AbortTransfer() {
    abort_wanted_ = true;
    session_.AbortTransfer();
    lanes_.Abort();
    room_.cancel();
}

void Worker::Core::DropSession() {
    session_.Drop();
    lanes_.Drop();
    room_.cancel();
    if (carrying_) return;  // what runs ends by itself, and tells
    request_ = 0;
    TellWhetherConnected();
    if (idling_.Running()) return idling_.End();  // a NOOP may be under way
    session_.Forget();
    session_.dropped = closing_;
}

void Worker::Core::BatchTaken() {
    --batches_;
    room_.cancel();
}

/// One operation, from its request to Finished. What is caught here is a fault of ours.
asio::awaitable<void> Worker::Core::Carry(Request request) {
    carrying_ = true;
    session_.dropped = closing_;
    abort_wanted_ = aside_ = session_.called_off = false;
    co_await idling_.AwaitEnd();
    request_ = request.id;
    is_listing_ = std::holds_alternative<List>(request.operation);
    is_download_ = std::holds_alternative<ftp::Retrieve>(request.operation);
    const bool keep_alive = request.keep_alive,
               makes = std::holds_alternative<MakeDirectory>(request.operation);
    Result<> outcome;
    try {
        outcome = co_await CarryOut(std::move(request));
    } catch (const std::exception& fault) {
        LeaveServer();
        session_.in_run = false;
        outcome = Fail(FailureKind::Protocol, fault.what());
    }
    Lose();
    if (!outcome) Tell(Problem{outcome.error(), makes && outcome.error().kind == FailureKind::Refused});
    session_.dropped = carrying_ = false;
    Tell(Finished{});
    request_ = 0;
    if (!closing_ && session_.Alive()) idling_.Begin(keep_alive);
}

/// A connection that has ended is forgotten; what leads back stays, where anything does.
void Worker::Core::Lose() {
    if (session_.control && !session_.control->Open()) session_.Forget();
    if (!session_.LoggedIn() && (reopening_failed_ || !CanReopen(session_))) session_.ForgetWayBack();
    reopening_failed_ = false;
    TellWhetherConnected();
}

void Worker::Core::IdlingEnded(bool by_itself, const std::string& fault) {
    if (!fault.empty()) sink_({0, Problem{Failure{FailureKind::Protocol, 0, fault}, false}});
    if (by_itself) Lose();
    if (!session_.LoggedIn()) session_.Forget();
    if (!carrying_) session_.dropped = closing_;
}

/// What needs the server finds it again where it has ended the session meanwhile.
asio::awaitable<Result<>> Worker::Core::CarryOut(Request request) {
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

bool Worker::Core::NeedsServer(const Operation& operation) const {
    if (std::holds_alternative<ftp::EndRun>(operation))
        return !session_.put_off.empty() || !session_.unchecked.empty();
    return !std::holds_alternative<ftp::BeginRun>(operation) && !std::holds_alternative<Quit>(operation) &&
           !std::holds_alternative<Reset>(operation);
}

asio::awaitable<Result<>> Worker::Core::OpenAgain() {
    if (session_.Alive() || !CanReopen(session_)) co_return Result<>{};
    const auto outcome = co_await Reopen(session_);
    reopening_failed_ = !outcome && outcome.error().kind != FailureKind::Cancelled;
    TellWhetherConnected();
    co_return outcome;
}

/// An operation that met a session which was dead already, and that has certainly changed nothing.
bool Worker::Core::MayRepeat(const Failure& failure) const {
    if (session_.Alive() || !CanReopen(session_) || CalledOff()) return false;
    if (has_listed_ || has_fetched_ || !session_.risk.None()) return false;
    const bool goodbye = failure.kind == FailureKind::Refused && failure.code == 421;
    return goodbye || (WasLetDown(failure) && !session_.heard);
}

asio::awaitable<Result<>> Worker::Core::CarryOutOnce(Request request) {
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

asio::awaitable<Result<>> Worker::Core::Connect(ftp::Connect connect) {
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

/// Forgets the server and closes all connections to it.
void Worker::Core::LeaveServer() {
    session_.Forget();
    session_.ForgetWayBack();
    lanes_.Drop();
    lanes_.TakeReturned();
    lanes_opened_ = false;
    access_ = {};
}

void Worker::Core::TellWhetherConnected() {
    const bool connected = session_.LoggedIn();
    const bool otherwise_safe = connected && told_tls_ != session_.tls_version;
    told_tls_ = session_.tls_version;
    if (std::exchange(connected_, connected) != connected || otherwise_safe)
        Tell(SessionChanged{connected, session_.features.utf8, session_.tls_version});
}

void Worker::Core::Sent(const std::string& line) {
    spoken_ = Clock::now();
    Tell(CommandSent{line});
}

void Worker::Core::TransferStarted(std::optional<std::int64_t> size) {
    if (!is_listing_ && !aside_) Tell(ftp::TransferStarted{size});
}

void Worker::Core::Moved(std::int64_t bytes) {
    has_fetched_ |= is_download_ && bytes > 0;
    if (!aside_) bytes_->store(bytes, std::memory_order_relaxed);
}

void Worker::Core::Secured(const std::string& version, const Certificate& certificate) {
    Tell(TlsAgreed{version, certificate});
}

void Worker::Core::NotKept(const std::string& label, const Failure& failure) {
    sink_({0, FileProblem{label, failure}});
}

void Worker::Core::LaneFailed(const FileToMove& file, const Failure& failure) {
    sink_({0, FileProblem{file.label, failure}});
}

asio::awaitable<void> Worker::Core::Listed(std::vector<std::string> lines) {
    while (batches_ >= kMaxBatches && !session_.Stopping()) {
        asio::error_code woken;
        room_.expires_at(asio::steady_timer::time_point::max());
        co_await room_.async_wait(asio::redirect_error(asio::use_awaitable, woken));
    }
    ++batches_;
    has_listed_ = true;
    Tell(ListingBatch{std::move(lines)});
}

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
