#include "ftp/engine/session/transfer.h"

#include <algorithm>
#include <utility>

#include "ftp/engine/session/check.h"

namespace ftp {
namespace {

char TypeOf(const TransferMode& mode) {
    return mode.image ? 'I' : 'A';
}

/// Whether a transfer may have failed because its port was given up meanwhile, or because the server minds
/// the command behind it.
bool MayComeFromHaste(const Failure& failure) {
    switch (failure.kind) {
        case FailureKind::ConnectionLost:
        case FailureKind::ConnectionRefused:
            return true;
        case FailureKind::Refused:
            return failure.code == 425 || failure.code == 426 || (failure.code >= 500 && failure.code <= 503);
        default:
            return false;
    }
}

}  // namespace

Transfer::Transfer(Session& session, TransferMode mode, std::int64_t offset)
    : session_(session), mode_(mode), offset_(offset), told_(offset) {
    session_.transfer = this;
    session_.events.Moved(offset);
}

Transfer::~Transfer() {
    session_.transfer = nullptr;
}

Task<> Transfer::Start(Command command, std::string size_of) {
    if (!session_.LoggedIn()) co_return Fail(FailureKind::NotConnected);
    std::vector<Command> commands;
    if (offset_ > 0) session_.next_port.reset();  // one step at a time: it has gone wrong once
    port_ = ReadyPort();
    if (!port_) {
        const auto asked = co_await AskAhead(size_of);
        if (!asked) co_return asked;
    } else {
        commands = CheckQuestions(session_);
    }
    checks_ = commands.size();
    const bool size_too = ahead_ && AsksSize(size_of);
    if (size_too) {
        auto size = MakeCommand("SIZE", size_of);
        if (!size) co_return Fail(size.error());
        commands.push_back(std::move(*size));
    }
    const bool next_too = session_.in_run && port_ && !session_.habits.one_at_a_time && offset_ == 0;
    commands.push_back(std::move(command));
    if (next_too) commands.push_back(AskPort());
    for (TransferReplies* replies : {&arrived_, &taken_}) replies->Expect(checks_, size_too, next_too);
    ahead_ |= next_too;

    const bool begins_first = session_.habits.overtakes && port_;
    if (!begins_first) {
        const auto opened = co_await OpenData();
        if (!opened) co_return opened;
        if (aborted_) co_return Fail(FailureKind::Cancelled);
    }
    if (continues_) {
        const auto agreed = co_await AskToContinue();
        if (!agreed) co_return agreed;
    }
    const auto sent = co_await SendCommands(std::move(commands));
    if (!sent) co_return sent;
    if (begins_first) {
        const auto begun = co_await AwaitBegin();
        if (!begun) co_return begun;
        const auto opened = co_await OpenData();
        if (!opened) co_return opened;
    }
    co_return co_await Establish();
}

/// The port that was asked for with the transfer before.
std::optional<std::uint16_t> Transfer::ReadyPort() {
    const auto port = std::exchange(session_.next_port, std::nullopt);
    const bool fits = mode_.passive && session_.type == TypeOf(mode_);
    ahead_ = port && fits;
    return fits ? port : std::nullopt;
}

Task<> Transfer::SendCommands(std::vector<Command> commands) {
    commanded_ = true;
    between_ = false;
    const auto sent = co_await session_.Send(std::move(commands));
    if (!sent) co_return sent;
    watch_.emplace(
        *session_.control, [this](const Reply& reply) { See(reply); },
        [this] {
            if (arrived_.Final()) return;  // what it has sent may still be on its way
            refused_ = true;
            CloseData();
        });
    co_return Result<>{};
}

/// A server that does at once whatever it finds gets the data connection when it has begun to wait for it, or
/// does not say so in time: one that came before might be taken for that of a transfer which was given up.
Task<> Transfer::AwaitBegin() {
    while (!taken_.Begun()) {
        const auto reply = co_await session_.control->Receive(session_.deadlines.ahead);
        if (!reply && reply.error().kind == FailureKind::TimedOut) {
            session_.habits.overtakes = false;  // it is the server that waits, so it cannot be one of these
            break;
        }
        if (!reply) co_return Fail(reply.error());
        taken_.Take(*reply);
        if (taken_.Final()) co_return Fail(RefusalOf(*taken_.Final()));
    }
    co_return Result<>{};
}

bool Transfer::AsksSize(const std::string& size_of) const {
    return mode_.image && !size_of.empty() && session_.features.size;
}

void Transfer::SetSize(const Reply& reply) {
    asked_ = ParseSizeReply(reply);
    has_asked_ = true;
    if (!uploads_) stated_ = asked_;
}

Command Transfer::AskPort() const {
    return *MakeCommand(session_.habits.refuses_epsv ? "PASV" : "EPSV");
}

std::optional<std::uint16_t> Transfer::PortOf(const Reply& reply) const {
    return session_.habits.refuses_epsv ? ParsePasv(reply) : ParseEpsv(reply);
}

/// The sizes of files that went before, TYPE where it is not set yet, SIZE where it helps, and EPSV or PASV:
/// all in one packet.
Task<> Transfer::AskAhead(const std::string& size_of) {
    const char type = TypeOf(mode_);
    const bool ask_type = session_.type != type;
    const bool ask_size = AsksSize(size_of);
    bool& refuses_port =
        session_.habits.refuses_epsv ? session_.habits.refuses_pasv : session_.habits.refuses_epsv;
    const bool ask_port = mode_.passive && !refuses_port;

    std::vector<Command> commands = CheckQuestions(session_);
    const std::size_t checks = commands.size();
    if (ask_type) commands.push_back(*MakeCommand("TYPE", {&type, 1}));
    if (ask_size) {
        auto command = MakeCommand("SIZE", size_of);
        if (!command) co_return Fail(command.error());
        commands.push_back(std::move(*command));
    }
    if (ask_port) commands.push_back(AskPort());

    const auto replies = co_await session_.Exchange(std::move(commands));
    if (!replies) co_return Fail(replies.error());
    auto reply = replies->begin() + static_cast<std::ptrdiff_t>(checks);
    TakeChecks(session_, {replies->begin(), reply});
    if (ask_type) {
        if (!reply->Completed()) co_return Fail(RefusalOf(*reply));
        session_.type = type;
        ++reply;
    }
    if (ask_size) SetSize(*reply++);
    if (!ask_port) co_return Result<>{};
    port_ = PortOf(*reply);
    if (port_) co_return Result<>{};
    if (reply->code / 100 == 4) co_return Fail(RefusalOf(*reply));  // not now, but it knows how
    refuses_port = true;                                            // for the rest of the session
    const std::string size_is_known;
    co_return co_await AskAhead(size_is_known);
}

/// REST, right before the transfer command (RFC 3659 section 5.3).
Task<> Transfer::AskToContinue() {
    cannot_continue_ = true;
    if (asked_ != continues_) co_return Fail(FailureKind::CutShort);  // another file by now
    between_ = true;
    const auto reply = co_await session_.Ask("REST", std::to_string(offset_));
    if (!reply) cannot_continue_ = false;
    if (!reply) co_return Fail(reply.error());
    if (!reply->Intermediate()) co_return Fail(FailureKind::CutShort);
    cannot_continue_ = false;
    co_return Result<>{};
}

Task<> Transfer::OpenData() {
    if (!port_) co_return co_await OpenActive();
    auto data = session_.transport.StartData(*port_);  // the SYN leaves; the command follows at once
    if (!data) co_return Fail(data.error());
    TakeData(std::move(*data));
    co_return Result<>{};
}

void Transfer::TakeData(std::unique_ptr<Stream> data) {
    data_ = session_.Encrypted() ? session_.transport.SecureData(std::move(data)) : std::move(data);
}

Task<> Transfer::OpenActive() {
    auto listener = session_.transport.Listen();
    if (!listener) co_return Fail(listener.error());
    listener_ = std::move(*listener);
    const std::string address = listener_->Address();
    const std::uint16_t port = listener_->Port();
    const bool ipv6 = listener_->IsIpv6();
    const std::string eprt = EprtArgument(address, ipv6, port);
    auto told = co_await session_.Do("EPRT", eprt);
    if (!told && told.error().kind == FailureKind::Refused && !ipv6 && session_.control->Open()) {
        const std::string classic = PortArgument(address, port);
        told = co_await session_.Do("PORT", classic);
    }
    co_return told;
}

/// Waits until the data connection stands, handshake and all.
Task<> Transfer::Establish() {
    const Deadline deadline(session_.transport.Executor(), session_.deadlines.connect,
                            [this] { CloseData(); });
    Result<> stands;
    if (listener_) {
        auto data = co_await listener_->Accept();
        if (data) TakeData(std::move(*data));
        if (!data) stands = Fail(data.error());
    }
    const auto called_off = [this] { return session_.Stopping() || refused_; };
    if (stands && !called_off()) stands = co_await data_->Connected();
    if (deadline.Expired()) co_return Fail(FailureKind::TimedOut);
    if (!stands) co_return stands;
    if (called_off()) co_return Fail(FailureKind::Cancelled);
    session_.events.TransferStarted(stated_);
    silence_.emplace(session_.transport.Executor(), session_.deadlines.data, [this] { CloseData(); });
    co_return Result<>{};
}

/// A reply that arrives while the bytes move.
void Transfer::See(const Reply& reply) {
    if (arrived_.Final()) return;  // what follows the answer is not about this transfer
    // pure-ftpd says nothing of a download that we have broken off, so what comes then tells no habits.
    if (aborted_ || (silence_ && silence_->Expired())) return;
    const bool sized = arrived_.Size().has_value();
    arrived_.Take(reply);
    const bool goodbye = reply.code == 421;
    if (goodbye && !arrived_.Begun()) session_.risk.sent = false;  // so it was not carried out
    session_.risk.done |= session_.risk.sent && arrived_.Begun();
    session_.heard |= !goodbye;
    if (checks_ > 0 && arrived_.Checks().size() == checks_) {
        checks_ = 0;
        TakeChecks(session_, arrived_.Checks());
    }
    if (!sized && arrived_.Size()) SetSize(*arrived_.Size());
    if (reply.Preliminary() && !stated_ && mode_.image) {
        stated_ = ParseTransferSize(reply);
        if (stated_) session_.events.TransferStarted(stated_);
    }
    overtaken_ = arrived_.Overtaken();
    refused_ = arrived_.Final() && arrived_.Final()->Refused();
    if (refused_ || overtaken_) CloseData();  // nobody will take or send more
}

void Transfer::Moved(std::int64_t bytes) {
    // What protects the bytes counts as unsent, too, so the difference may go back a little.
    told_ = std::max(told_, bytes - static_cast<std::int64_t>(data_->Unsent()));
    session_.events.Moved(told_);
    silence_->Restart();
}

void Transfer::Abort() {
    if (ending_ || std::exchange(aborted_, true)) return;
    CloseData();
    if (session_.control) session_.control->Interrupt();
}

void Transfer::CloseData() {
    if (data_) data_->Reset();
    if (listener_) listener_->Close();
}

Task<> Transfer::Finish(Result<> moved) {
    const bool silent = silence_ && silence_->Expired();
    silence_.reset();
    if (session_.dropped) co_return Fail(FailureKind::Cancelled);
    if (!session_.control) co_return moved;
    if (!moved && !aborted_ && !commanded_ && !session_.control->Owes()) co_return moved;  // never began

    // The server says how it went, unless we are the ones who broke off.
    const bool server_ended = refused_ || (!moved && (moved.error().kind == FailureKind::ConnectionLost ||
                                                      moved.error().kind == FailureKind::CutShort));
    const bool broke_off = aborted_ || overtaken_ || silent || (!moved && !server_ended);
    if (!broke_off) {
        const auto answered = co_await AwaitFinal();
        if (data_) data_->Close();
        if (session_.dropped) co_return Fail(FailureKind::Cancelled);
        if (!aborted_ && !overtaken_) {
            if (!answered) co_return answered;
            ending_ = true;
            co_await AwaitNextPort();
            const Reply& answer = *taken_.Final();
            if (answer.code == 421) session_.control->Close();
            if (!answer.Completed()) co_return Fail(RefusalOf(answer));
            co_return moved;
        }
    }
    ending_ = true;
    watch_.reset();
    CloseData();
    const auto in_step = co_await BackInStep();
    if (!in_step) session_.control->Close();
    if (aborted_ || session_.dropped) co_return Fail(FailureKind::Cancelled);
    if (silent) co_return Fail(FailureKind::TimedOut);
    if (overtaken_) co_return Fail(FailureKind::Protocol);
    co_return moved;
}

/// Until the final reply is here. What was sent may still be on its way through a slow line: as long as it
/// moves, so does the limit.
Task<> Transfer::AwaitFinal() {
    while (!taken_.Final() && !overtaken_) {
        const std::size_t unsent = data_ ? data_->Unsent() : 0;
        const bool unclear = taken_.Unclear();
        const auto reply =
            co_await session_.control->Receive(unclear ? session_.deadlines.ahead : session_.deadlines.reply);
        if (reply) {
            taken_.Take(*reply);
            continue;
        }
        const bool late = reply.error().kind == FailureKind::TimedOut;
        const bool moving = data_ && data_->Unsent() < unsent;
        if (late && moving) continue;
        if (late && !unclear) session_.control->Close();
        if (!late || !unclear) co_return Fail(reply.error());
        taken_.Close();
        swallowed_ = true;
    }
    co_return Result<>{};
}

/// The port for the next transfer, which was asked for together with this one. The transfer itself is over,
/// so nothing that goes wrong here is its failure.
asio::awaitable<void> Transfer::AwaitNextPort() {
    const auto limit = swallowed_ ? std::chrono::milliseconds(0) : session_.deadlines.ahead;
    while (taken_.PortDue()) {
        const auto reply = co_await session_.control->Receive(limit);
        if (reply) {
            taken_.Take(*reply);
            continue;
        }
        if (reply.error().kind != FailureKind::TimedOut) co_return;
        session_.habits.one_at_a_time = true;  // it swallows what stands behind a transfer command
        watch_.reset();
        const auto in_step = co_await ReadUpToNoop();
        if (!in_step) session_.control->Close();
        co_return;
    }
    if (!taken_.Port()) co_return;
    session_.next_port = PortOf(*taken_.Port());
    if (!session_.next_port) session_.habits.one_at_a_time = true;
}

bool Transfer::Retreat(const Result<>& outcome) {
    if (overtaken_) session_.habits.overtakes = true;
    const bool possible =
        !outcome && ahead_ && !aborted_ && !session_.dropped && session_.control && session_.control->Open();
    if (!possible || !(overtaken_ || MayComeFromHaste(outcome.error()))) return false;
    session_.habits.one_at_a_time = true;
    session_.next_port.reset();
    return true;
}

/// Ends what the server still does and reads all replies that are due, so that the next command meets its own
/// answer.
Task<> Transfer::BackInStep() {
    Control& control = *session_.control;
    const Deadline deadline(session_.transport.Executor(), session_.deadlines.abort,
                            [&control] { control.Close(); });
    control.EndInterruption();
    if (!commanded_) {
        while (control.Owes()) {
            const auto reply = co_await control.Receive();
            if (!reply) co_return Fail(reply.error());
        }
        if (!between_) co_return Result<>{};
        // Else the next transfer would begin where this one was to.
        const auto from_the_start = co_await session_.Ask("REST", "0");
        if (!from_the_start) co_return Fail(from_the_start.error());
        co_return Result<>{};
    }
    // Servers answer ABOR with one reply or two, in either order, or swallow what follows it in the same
    // packet. So: one reply first, then NOOP.
    const auto aborted = co_await session_.Ask("ABOR");
    if (!aborted) co_return Fail(aborted.error());
    const auto more = co_await ReadUpToNoop();
    if (!more) co_return Fail(more.error());
    // A 225 alone says that there was nothing to end. What had been accepted may then still come, over the
    // data connection of the next transfer (pyftpdlib).
    const bool ended = aborted->code != 225 || *more > 0 || arrived_.Final() || overtaken_;
    if (!ended) co_return Fail(FailureKind::Protocol);
    co_return Result<>{};
}

/// NOOP, whose 200 is the last reply that is due. How many have come before it.
Task<int> Transfer::ReadUpToNoop() {
    Control& control = *session_.control;
    const Deadline deadline(session_.transport.Executor(), session_.deadlines.abort,
                            [&control] { control.Close(); });
    auto reply = co_await session_.Ask("NOOP");
    int before = 0;
    for (; reply && reply->code != 200 && control.Owes(); ++before) reply = co_await control.Receive();
    if (!reply) co_return Fail(reply.error());
    control.Settle();
    co_return before;
}

}  // namespace ftp
