#include "ftp/engine/session/control.h"

#include <algorithm>
#include <array>
#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/redirect_error.hpp>
#include <asio/steady_timer.hpp>
#include <asio/use_awaitable.hpp>
#include <deque>
#include <iterator>
#include <optional>
#include <utility>

#include "ftp/engine/net/deadline.h"

namespace ftp {
namespace {

using Clock = std::chrono::steady_clock;

/// More unread replies than any exchange of ours can have under way: a server that talks on without being
/// asked has to wait.
constexpr std::size_t kMaxUnread = 64;

asio::awaitable<void> Sleep(asio::steady_timer& timer) {
    asio::error_code woken;
    co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, woken));
}

}  // namespace

struct Control::State {
    State(const asio::any_io_executor& executor, std::unique_ptr<Stream> connection, Events& listener,
          std::chrono::milliseconds limit, Reading wanted)
        : stream(std::move(connection)),
          events(listener),
          reply_limit(limit),
          reading(wanted),
          arrived(executor),
          taken(executor) {}

    void End(Failure why) {
        if (ended) return;
        ended = std::move(why);
        stream->Close();
        arrived.cancel();
        taken.cancel();
        if (on_end) on_end();
    }

    void Keep(Reply reply) {
        replies.push_back(std::move(reply));
        arrived.cancel();
        if (on_reply) on_reply(replies.back());
    }

    /// The trace shows a command when all that was asked before it has been answered.
    void TellTurn() {
        if (!asked.empty() && !std::exchange(asked.front().told, true)) events.Sent(asked.front().trace);
    }

    /// Replies to nothing would be taken for the next command's. A 421 is kept: it says why the session ends.
    void DropUnasked() {
        while (!replies.empty() && replies.front().code != 421) {
            for (const std::string& line : replies.front().lines) events.Received(line);
            replies.pop_front();
        }
    }

    /// Whether the next bytes may be read. With room for replies and, in plain text that is to end, only for
    /// the answers that are due.
    bool MayRead() const {
        if (replies.size() > kMaxUnread || reading == Reading::NotYet) return false;
        const auto answers = std::ranges::count_if(replies, [](const Reply& r) { return !r.Preliminary(); });
        return reading == Reading::Freely || answers < std::ssize(asked);
    }

    static asio::awaitable<void> ReadReplies(std::shared_ptr<State> state);

    std::unique_ptr<Stream> stream;
    Events& events;
    std::chrono::milliseconds reply_limit;
    Reading reading;
    asio::steady_timer arrived;  // cancelled when a reply, or the end, has come
    asio::steady_timer taken;    // cancelled when there may be room for more
    ReplyParser parser;
    std::deque<Reply> replies;
    std::optional<Failure> ended;
    bool interrupted = false;
    std::function<void(const Reply&)> on_reply;
    std::function<void()> on_end;

    struct Asked {
        std::string trace;
        bool told = false;
    };
    std::deque<Asked> asked{{{}, true}};  // commands sent and not answered to their end; first, the greeting
};

/// Reads for as long as the connection lives. Holds the state itself: it ends a moment after Close.
asio::awaitable<void> Control::State::ReadReplies(std::shared_ptr<State> state) {
    std::array<char, 16 * 1024> bytes;
    while (!state->ended) {
        if (!state->MayRead()) {
            state->taken.expires_at(Clock::time_point::max());
            co_await Sleep(state->taken);
            continue;
        }
        const auto got = co_await state->stream->Read(asio::buffer(bytes));
        if (!got) {
            const bool cut_short = got.error().kind == FailureKind::CutShort;
            state->End(cut_short ? Failure{FailureKind::ConnectionLost, 0, {}} : got.error());
        } else if (*got == 0) {
            state->End(Failure{FailureKind::ConnectionLost, 0, {}});
        } else {
            const auto fed = state->parser.Feed({bytes.data(), *got});
            while (auto reply = state->parser.Take()) state->Keep(std::move(*reply));
            if (!fed) state->End(fed.error());
        }
    }
}

Control::Control(const asio::any_io_executor& executor, std::unique_ptr<Stream> stream, Events& events,
                 std::chrono::milliseconds reply_limit, Reading reading)
    : state_(std::make_shared<State>(executor, std::move(stream), events, reply_limit, reading)) {
    asio::co_spawn(executor, State::ReadReplies(state_), asio::detached);
}

Control::~Control() {
    Close();
}

Task<> Control::Secure(const std::function<std::unique_ptr<Stream>(std::unique_ptr<Stream>)>& wrap) {
    const auto state = state_;
    const bool garbled = state->ended && state->ended->kind == FailureKind::Protocol;
    const bool unasked = garbled || !state->replies.empty() || state->parser.InTheMiddle();
    if (unasked) state->End(Failure{FailureKind::TlsFailed, 0, {}});
    if (unasked) co_return Fail(FailureKind::TlsFailed);
    if (state->ended) co_return Fail(*state->ended);
    state->stream = wrap(std::move(state->stream));
    const auto stands = co_await state->stream->Connected();
    if (!stands) state->End(stands.error());
    if (state->ended) co_return Fail(*state->ended);
    ReadFreely();
    co_return Result<>{};
}

void Control::ReadFreely() {
    state_->reading = Reading::Freely;
    state_->taken.cancel();
}

Task<> Control::Send(std::vector<Command> commands) {
    const auto state = state_;
    if (!Owes()) state->DropUnasked();
    if (state->ended && state->replies.empty()) co_return Fail(*state->ended);
    std::string bytes;
    for (Command& command : commands) {
        bytes += command.line;
        state->asked.push_back({std::move(command.trace)});
    }
    state->taken.cancel();
    state->TellTurn();
    // A write that fails tells less than the reply that the server may have sent before it closed: the reader
    // finds both, so the outcome shows in Receive.
    const Deadline deadline(state->arrived.get_executor(), state->reply_limit, [state] {
        state->End(Failure{FailureKind::TimedOut, 0, {}});
    });
    [[maybe_unused]] const auto written = co_await state->stream->Write(asio::buffer(bytes));
    co_return Result<>{};
}

Task<Reply> Control::Receive() {
    return Receive(state_->reply_limit);
}

Task<Reply> Control::Receive(std::chrono::milliseconds limit) {
    const auto state = state_;
    const auto end = Clock::now() + limit;
    while (state->replies.empty() && !state->ended && !state->interrupted && Clock::now() < end) {
        state->arrived.expires_at(end);
        co_await Sleep(state->arrived);
    }
    if (state->interrupted) co_return Fail(FailureKind::Cancelled);
    if (state->replies.empty()) co_return Fail(state->ended.value_or(Failure{FailureKind::TimedOut, 0, {}}));

    Reply reply = std::move(state->replies.front());
    state->replies.pop_front();
    state->taken.cancel();
    for (const std::string& line : reply.lines) state->events.Received(line);
    if (!reply.Preliminary() && !state->asked.empty()) state->asked.pop_front();
    state->TellTurn();
    co_return reply;
}

Control::Watch::Watch(Control& control, std::function<void(const Reply&)> on_reply,
                      std::function<void()> on_end)
    : control_(control) {
    State& state = *control.state_;
    state.on_reply = std::move(on_reply);
    state.on_end = std::move(on_end);
    for (const Reply& reply : state.replies) state.on_reply(reply);
    if (state.ended) state.on_end();
}

Control::Watch::~Watch() {
    control_.state_->on_reply = nullptr;
    control_.state_->on_end = nullptr;
}

void Control::Interrupt() {
    state_->interrupted = true;
    state_->arrived.cancel();
}

void Control::EndInterruption() {
    state_->interrupted = false;
}

void Control::Settle() {
    state_->asked.clear();
}

bool Control::Open() const {
    return !state_->ended;
}

bool Control::Owes() const {
    return !state_->asked.empty();
}

void Control::Close() {
    state_->End(Failure{FailureKind::Cancelled, 0, {}});
}

}  // namespace ftp
