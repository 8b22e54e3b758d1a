#include "ftp/engine/session/check.h"
#include "ftp/engine/session/files.h"
#include "ftp/engine/wire/directory.h"
#include "ftp/engine/worker_core.h"

namespace ftp {
namespace {

/// Bytes. From here on the line is full anyway, and a file is worth watching.
constexpr std::int64_t kLarge = 256 * 1024;
/// Fewer small files are over before a lane has logged in.
constexpr int kFilesBeforeLanes = 2;

}  // namespace

Result<> Worker::Core::BeginRun(std::size_t lanes) {
    session_.in_run = true;
    lanes_wanted_ = lanes;
    lanes_opened_ = false;
    small_files_ = 0;
    return {};
}

void Worker::Core::EndRun() {
    lanes_.End();
    session_.in_run = false;
}

/// What a run has taken on comes to its end.
asio::awaitable<Result<>> Worker::Core::Settle() {
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

/// Nothing is written to where another file is still being written, or has still to be.
asio::awaitable<void> Worker::Core::AwaitTurn(const FileToMove& file) {
    co_await lanes_.AwaitTarget(file);
    co_await SendReturned();
    if (file.remote.starts_with('/')) ForgetCheckOf(session_, file);  // goes over a lane
}

/// Over a lane where the file is small and one may be had, else over the session itself.
asio::awaitable<Result<>> Worker::Core::Move(FileToMove file, std::optional<std::int64_t> size) {
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
asio::awaitable<Result<>> Worker::Core::MoveOverSession(const FileToMove& file) {
    auto outcome = co_await MoveFile(session_, file);
    const bool crowded =
        !outcome && outcome.error().kind == FailureKind::Refused && outcome.error().code == 425;
    if (!crowded || CalledOff() || lanes_.None()) co_return outcome;
    lanes_wanted_ = 0;
    co_await lanes_.Leave();
    co_return co_await MoveFile(session_, file);
}

/// Asked for each small file of a run, the lanes are opened when there are enough of them.
bool Worker::Core::LanesAreReady() {
    if (lanes_wanted_ == 0 || !session_.LoggedIn() || ++small_files_ <= kFilesBeforeLanes) return false;
    if (!std::exchange(lanes_opened_, true)) {
        Access access = access_;
        access.address = transport_->PeerAddress();
        lanes_.Open(lanes_wanted_, access, session_.habits);
    }
    return lanes_.Ready();
}

/// Lanes have no current directory. NotConnected: no lane can take the file.
asio::awaitable<Result<>> Worker::Core::Give(FileToMove file) {
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
asio::awaitable<void> Worker::Core::SendReturned() {
    aside_ = true;
    for (const FileToMove& file : lanes_.TakeReturned()) {
        Result<> outcome = Fail(FailureKind::Cancelled);
        if (!CalledOff()) outcome = co_await OpenAgain();
        if (outcome) outcome = co_await MoveOverSession(file);
        if (!outcome) LaneFailed(file, outcome.error());
    }
    aside_ = false;
}

std::optional<std::int64_t> Worker::Core::SizeOf(const std::string& path) {
    const auto source = files_->OpenSource(path);
    return source ? std::optional((*source)->Size()) : std::nullopt;
}

}  // namespace ftp
