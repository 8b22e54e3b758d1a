#include "ftp/engine/lanes.h"

#include <algorithm>
#include <asio/co_spawn.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <exception>
#include <string_view>
#include <utility>

#include "ftp/engine/session/check.h"
#include "ftp/engine/session/quit.h"
#include "ftp/engine/session/retrieve.h"
#include "ftp/engine/session/store.h"

namespace ftp {

Task<> MoveFile(Session& session, const FileToMove& file) {
    return file.up ? StoreFile(session, file.mode, file.local_path, file.remote, file.label)
                   : RetrieveFile(session, file.mode, file.remote, file.local_path);
}

namespace {

std::string_view LastName(std::string_view name) {
    return name.substr(name.rfind('/') + 1);
}

/// Whether another connection may succeed with the file.
bool IsWantOfLane(const Failure& failure) {
    switch (failure.kind) {
        case FailureKind::ConnectionLost:
        case FailureKind::ConnectionRefused:
        case FailureKind::Unreachable:
        case FailureKind::TimedOut:
        case FailureKind::CutShort:
        case FailureKind::Protocol:
        case FailureKind::NotConnected:
            return true;
        case FailureKind::Refused:
            return failure.code == 421 || failure.code == 425 || failure.code == 426 || failure.code == 451;
        default:
            return false;
    }
}

}  // namespace

bool HaveOneTarget(const FileToMove& a, const FileToMove& b) {
    if (a.up != b.up) return false;
    if (!a.up) return a.local_path == b.local_path;
    const bool absolute = a.remote.starts_with('/') && b.remote.starts_with('/');
    return absolute ? a.remote == b.remote : LastName(a.remote) == LastName(b.remote);
}

void ForgetCheckOf(Session& session, const FileToMove& file) {
    FileToMove sent;
    for (Unchecked& each : session.unchecked) {
        sent.remote = each.remote;
        each.overwritten |= HaveOneTarget(sent, file);
    }
}

struct Lanes::Lane : Events {
    enum class State { Opening, Idle, Busy, Leaving };

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
    void Secured(const std::string&, const Certificate&) override {}
    void Trouble(const Failure&) override {}
    void NotKept(const std::string& label, const Failure& failure) override {
        FileToMove gone;
        gone.label = label;
        events.LaneFailed(gone, failure);
    }

    /// What has been settled meanwhile is nobody's concern any more.
    void StrikeOutChecked() {
        std::erase_if(to_check, [this](const FileToMove& sent) {
            const auto is_it = [&sent](const Unchecked& other) {
                return other.remote == sent.remote && !other.overwritten;
            };
            return std::ranges::none_of(session.unchecked, is_it);
        });
    }

    LaneEvents& events;
    std::unique_ptr<Transport> transport;
    Session session;
    State state = State::Opening;
    FileToMove file;  // while Busy
    std::vector<FileToMove> to_check =
        {};                   // the server has confirmed them, and not been asked for their size
    bool called_off = false;  // so is the file
};

Lanes::Lanes(asio::any_io_executor executor, LocalFiles& files, const Deadlines& deadlines,
             LaneEvents& events)
    : executor_(std::move(executor)),
      files_(files),
      deadlines_(deadlines),
      events_(events),
      moved_(executor_) {}

Lanes::~Lanes() = default;

/// A lane stays in the list until nothing of it runs any more.
template <class Coroutine>
void Lanes::Spawn(const std::shared_ptr<Lane>& lane, Coroutine coroutine) {
    asio::co_spawn(executor_, std::move(coroutine), [this, lane](const std::exception_ptr& fault) {
        if (fault) lane->session.Forget();
        const bool has_next_file = lane->state == Lane::State::Busy;
        if (!lane->Lives() && !has_next_file) std::erase(lanes_, lane);
        moved_.cancel();
    });
}

void Lanes::Open(std::size_t count, const Access& access, const Habits& habits) {
    for (; count > 0; --count) {
        lanes_.push_back(std::make_shared<Lane>(*this));
        Spawn(lanes_.back(), LogIn(lanes_.back(), access, habits));
    }
}

asio::awaitable<void> Lanes::LogIn(std::shared_ptr<Lane> lane, Access access, Habits habits) {
    const auto outcome = co_await Login(lane->session, std::move(access));
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

/// What a lane has left when it ends: nobody knows what became of its last files.
void Lanes::ReturnUnchecked(Lane& lane) {
    lane.StrikeOutChecked();
    if (lane.Lives()) return;
    for (FileToMove& sent : std::exchange(lane.to_check, {})) returned_.push_back(std::move(sent));
}

/// The server has closed some while they were idle.
void Lanes::DropDead() {
    for (const auto& lane : lanes_)
        if (lane->state == Lane::State::Idle) ReturnUnchecked(*lane);
    std::erase_if(lanes_,
                  [](const auto& lane) { return lane->state == Lane::State::Idle && !lane->Lives(); });
}

Task<> Lanes::Give(FileToMove file) {
    called_off_ = false;
    while (!called_off_) {
        DropDead();
        const auto idle = std::ranges::find(lanes_, Lane::State::Idle, &Lane::state);
        if (idle != lanes_.end()) {
            (*idle)->state = Lane::State::Busy;
            (*idle)->file = std::move(file);
            (*idle)->called_off = false;
            Spawn(*idle, Carry(*idle));
            co_return Result<>{};
        }
        if (!Ready()) co_return Fail(FailureKind::NotConnected);
        co_await Moved();
    }
    co_return Fail(FailureKind::Cancelled);
}

/// What gets out of a transfer is a fault of ours, and ends the lane.
asio::awaitable<void> Lanes::Carry(std::shared_ptr<Lane> lane) {
    Result<> outcome = Fail(FailureKind::Cancelled);
    try {
        if (!lane->called_off) outcome = co_await MoveFile(lane->session, lane->file);
    } catch (const std::exception& fault) {
        lane->session.Forget();
        outcome = Fail(FailureKind::Protocol, fault.what());
    }
    if (outcome && lane->file.up) lane->to_check.push_back(lane->file);
    ReturnUnchecked(*lane);
    if (!outcome && IsWantOfLane(outcome.error())) {
        returned_.push_back(std::move(lane->file));
    } else if (!outcome) {
        events_.LaneFailed(lane->file, outcome.error());
    }
    lane->state = Lane::State::Idle;
}

asio::awaitable<void> Lanes::AwaitTarget(const FileToMove& file) {
    const auto writes_there = [&file](const auto& lane) {
        return lane->state == Lane::State::Busy && HaveOneTarget(lane->file, file);
    };
    while (std::ranges::any_of(lanes_, writes_there)) co_await Moved();
    for (const auto& lane : lanes_) ForgetCheckOf(lane->session, file);
}

asio::awaitable<void> Lanes::Rest() {
    for (;;) {
        DropDead();
        for (const auto& lane : lanes_) {
            if (lane->state != Lane::State::Idle || lane->session.unchecked.empty()) continue;
            lane->state = Lane::State::Busy;
            Spawn(lane, Check(lane));
        }
        if (std::ranges::count(lanes_, Lane::State::Busy, &Lane::state) == 0) co_return;
        co_await Moved();
    }
}

asio::awaitable<void> Lanes::Check(std::shared_ptr<Lane> lane) {
    try {
        const auto checked = co_await CheckAll(lane->session);
        if (!checked) lane->session.control->Close();
    } catch (const std::exception&) {
        lane->session.Forget();
    }
    ReturnUnchecked(*lane);
    lane->state = Lane::State::Idle;
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
    for (const auto& lane : lanes_) {
        lane->called_off = true;
        lane->session.AbortTransfer();
    }
    moved_.cancel();
}

void Lanes::Drop() {
    called_off_ = true;
    for (const auto& lane : lanes_) lane->session.Drop();
    moved_.cancel();
}

void Lanes::End() {
    DropDead();
    for (const auto& lane : lanes_) {
        if (lane->state == Lane::State::Opening) lane->session.Drop();
        if (lane->state != Lane::State::Idle) continue;
        lane->state = Lane::State::Leaving;
        Spawn(lane, QuitSession(lane->session));
    }
}

asio::awaitable<void> Lanes::Leave() {
    co_await Rest();
    End();
    while (!lanes_.empty()) co_await Moved();
}

}  // namespace ftp
