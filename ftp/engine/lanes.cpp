#include "ftp/engine/lanes.h"

#include <algorithm>
#include <asio/co_spawn.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <exception>
#include <utility>

#include "ftp/engine/session/quit.h"
#include "ftp/engine/session/retrieve.h"
#include "ftp/engine/session/store.h"

namespace ftp {

Task<> MoveFile(Session& session, const FileToMove& file) {
    return file.up ? StoreFile(session, file.mode, file.local_path, file.remote)
                   : RetrieveFile(session, file.mode, file.remote, file.local_path);
}

namespace {

/// Whether another connection may succeed with the file.
bool IsWantOfLane(const Failure& failure) {
    switch (failure.kind) {
        case FailureKind::ConnectionLost:
        case FailureKind::ConnectionRefused:
        case FailureKind::Unreachable:
        case FailureKind::TimedOut:
        case FailureKind::Protocol:
        case FailureKind::NotConnected:
            return true;
        case FailureKind::Refused:
            return failure.code == 421 || failure.code == 425 || failure.code == 426;
        default:
            return false;
    }
}

}  // namespace

struct Lanes::Lane : Events {
    enum class State { Opening, Idle, Busy, Gone };

    explicit Lane(Lanes& lanes)
        : events(lanes.events_),
          transport(MakeTcpTransport(lanes.executor_)),
          session(*transport, lanes.files_, *this, lanes.deadlines_) {}

    bool Lives() const { return session.LoggedIn() && session.control->Open(); }

    // What is said at login and goodbye is of no interest.
    void Sent(const std::string& line) override {
        if (state == State::Busy) events.LaneSent(line);
    }
    void Received(const std::string& line) override {
        if (state == State::Busy) events.LaneReceived(line);
    }
    void TransferStarted(std::optional<std::int64_t>) override {}
    void Moved(std::int64_t) override {}
    asio::awaitable<void> Listed(std::vector<std::string>) override { co_return; }
    void Trouble(const Failure&) override {}

    LaneEvents& events;
    std::unique_ptr<Transport> transport;
    Session session;
    State state = State::Opening;
};

Lanes::Lanes(asio::any_io_executor executor, LocalFiles& files, const Deadlines& deadlines,
             LaneEvents& events)
    : executor_(std::move(executor)),
      files_(files),
      deadlines_(deadlines),
      events_(events),
      moved_(executor_) {}

Lanes::~Lanes() = default;

/// What gets out of a lane's coroutine is a fault of ours, and ends the lane.
template <class Coroutine>
void Lanes::Spawn(const std::shared_ptr<Lane>& lane, Coroutine coroutine) {
    asio::co_spawn(executor_, std::move(coroutine), [this, lane](const std::exception_ptr& fault) {
        if (fault) lane->session.Forget();
        if (!lane->Lives()) lane->state = Lane::State::Gone;
        moved_.cancel();
    });
}

void Lanes::Open(std::size_t count, const HostAndPort& where, const Credentials& who, const Habits& habits) {
    std::erase_if(lanes_, [](const auto& lane) { return lane->state == Lane::State::Gone; });
    for (; count > 0; --count) {
        lanes_.push_back(std::make_shared<Lane>(*this));
        Spawn(lanes_.back(), LogIn(lanes_.back(), where, who, habits));
    }
}

asio::awaitable<void> Lanes::LogIn(std::shared_ptr<Lane> lane, HostAndPort where, Credentials who,
                                   Habits habits) {
    const auto outcome = co_await Login(lane->session, std::move(where), std::move(who));
    if (!outcome) co_return;
    habits.one_at_a_time |= lane->session.habits.one_at_a_time;
    lane->session.habits = habits;
    lane->session.in_run = true;
    lane->state = Lane::State::Idle;
}

bool Lanes::Ready() const {
    return std::ranges::any_of(lanes_, [](const auto& lane) {
        return lane->state == Lane::State::Idle || lane->state == Lane::State::Busy;
    });
}

Task<> Lanes::Give(FileToMove file) {
    called_off_ = false;
    while (!called_off_) {
        for (const auto& lane : lanes_)
            if (lane->state == Lane::State::Idle && !lane->Lives()) lane->state = Lane::State::Gone;
        const auto idle = std::ranges::find(lanes_, Lane::State::Idle, &Lane::state);
        if (idle != lanes_.end()) {
            (*idle)->state = Lane::State::Busy;
            Spawn(*idle, Carry(*idle, std::move(file)));
            co_return Result<>{};
        }
        if (!Ready()) co_return Fail(FailureKind::NotConnected);
        co_await Moved();
    }
    co_return Fail(FailureKind::Cancelled);
}

asio::awaitable<void> Lanes::Carry(std::shared_ptr<Lane> lane, FileToMove file) {
    const auto outcome = co_await MoveFile(lane->session, file);
    if (!outcome && IsWantOfLane(outcome.error())) {
        returned_.push_back(std::move(file));
    } else if (!outcome) {
        events_.LaneFailed(file, outcome.error());
    }
    lane->state = Lane::State::Idle;
}

asio::awaitable<void> Lanes::Rest() {
    while (std::ranges::count(lanes_, Lane::State::Busy, &Lane::state) > 0) co_await Moved();
}

asio::awaitable<void> Lanes::Moved() {
    asio::error_code woken;
    moved_.expires_at(asio::steady_timer::time_point::max());
    co_await moved_.async_wait(asio::redirect_error(asio::use_awaitable, woken));
}

std::vector<FileToMove> Lanes::TakeReturned() {
    return std::exchange(returned_, {});
}

void Lanes::Abort() {
    called_off_ = true;
    for (const auto& lane : lanes_) lane->session.AbortTransfer();
    moved_.cancel();
}

void Lanes::Drop() {
    called_off_ = true;
    for (const auto& lane : lanes_) lane->session.Drop();
    moved_.cancel();
}

void Lanes::End() {
    for (const auto& lane : lanes_) {
        if (lane->state == Lane::State::Opening) lane->session.Drop();
        if (lane->state != Lane::State::Idle) continue;
        lane->state = Lane::State::Gone;
        Spawn(lane, QuitSession(lane->session));
    }
}

}  // namespace ftp
