#include "ftp/engine/session/session.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <utility>

#include "ftp/engine/session/check.h"
#include "ftp/engine/session/transfer.h"
#include "ftp/engine/wire/directory.h"

namespace ftp {
namespace {

/// The old name of a file (RNFR) changes nothing by itself.
bool ChangesSomething(std::string_view line) {
    static constexpr std::array<std::string_view, 6> kVerbs{"DELE ", "RMD ",  "MKD ",
                                                            "RNTO ", "STOR ", "APPE "};
    return std::ranges::any_of(kVerbs, [line](auto verb) { return line.starts_with(verb); });
}

bool LeadsElsewhere(const Command& step) {
    return step.line.starts_with("CWD ");
}

}  // namespace

Task<> Session::Send(std::vector<Command> commands) {
    const bool changes =
        std::ranges::any_of(commands, [](const auto& command) { return ChangesSomething(command.line); });
    const auto sent = co_await control->Send(std::move(commands));
    if (sent && changes) risk.sent = true;
    co_return sent;
}

Task<Reply> Session::ReceiveFinal(std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;  // however much comes that is no answer
    for (;;) {
        const auto left = end - std::chrono::steady_clock::now();
        auto reply = co_await control->Receive(std::chrono::ceil<std::chrono::milliseconds>(left));
        if (reply && reply->Preliminary()) continue;
        if (!control) co_return Fail(FailureKind::Cancelled);  // dropped meanwhile
        const bool goodbye = reply && reply->code == 421;
        const bool late = !reply && reply.error().kind == FailureKind::TimedOut;
        if (goodbye || late) control->Close();
        if (goodbye) risk.sent = false;  // what it answers, and what follows that, was not carried out
        if (goodbye) co_return Fail(RefusalOf(*reply));
        if (reply) heard = true;
        co_return reply;
    }
}

Task<Reply> Session::Ask(std::string_view verb, std::string_view argument) {
    if (!control) co_return Fail(FailureKind::NotConnected);
    auto command = MakeCommand(verb, argument);
    if (!command) co_return Fail(command.error());
    const bool changes = ChangesSomething(command->line);
    std::vector<Command> commands;
    commands.push_back(std::move(*command));
    const auto sent = co_await Send(std::move(commands));
    if (!sent) co_return Fail(sent.error());
    auto reply = co_await ReceiveFinal(deadlines.reply);
    if (reply && changes) risk.done = true;
    co_return reply;
}

Task<std::vector<Reply>> Session::Exchange(std::vector<Command> commands) {
    const std::size_t packet = habits.one_at_a_time ? 1 : commands.size();
    std::vector<Reply> replies;
    for (auto next = commands.begin(); next != commands.end();) {
        const auto last = next + static_cast<std::ptrdiff_t>(packet);
        std::vector<Command> together(std::make_move_iterator(next), std::make_move_iterator(last));
        next = last;
        const auto sent = co_await Send(std::move(together));
        if (!sent) co_return Fail(sent.error());
        for (std::size_t i = 0; i < packet; ++i) {
            auto reply = co_await ReceiveFinal(deadlines.reply);
            if (!reply) co_return Fail(reply.error());
            replies.push_back(std::move(*reply));
        }
    }
    co_return replies;
}

Task<> Session::Do(std::string_view verb, std::string_view argument) {
    const auto reply = co_await Ask(verb, argument);
    if (!reply) co_return Fail(reply.error());
    if (!reply->Completed()) co_return Fail(RefusalOf(*reply));
    co_return Result<>{};
}

asio::awaitable<void> Session::KeepAwake() {
    std::vector<Command> commands{*MakeCommand("NOOP")};
    const auto sent = co_await Send(std::move(commands));
    if (!sent || !control) co_return;
    [[maybe_unused]] const auto awake = co_await ReceiveFinal(deadlines.ahead);  // closes it if it is late
}

Task<> Session::CatchUp() {
    if (put_off.empty()) co_return Result<>{};
    if (!control) co_return Fail(FailureKind::NotConnected);
    const std::vector<Command> steps = std::exchange(put_off, {});
    const bool asks_where = !directory || std::ranges::any_of(steps, LeadsElsewhere);
    std::vector<Command> commands = CheckQuestions(*this);
    const std::size_t checks = commands.size();
    commands.insert(commands.end(), steps.begin(), steps.end());
    if (asks_where) commands.push_back(*MakeCommand("PWD"));
    const auto told = co_await CarryOutSteps(std::move(commands), checks, steps, asks_where);
    if (told) co_return told;
    // What changes nothing can leave once more, from the directory that is still known.
    const bool changes =
        std::ranges::any_of(steps, [](const auto& step) { return ChangesSomething(step.line); });
    if (!changes || risk.None()) {
        put_off = steps;
    } else if (std::ranges::any_of(steps, LeadsElsewhere)) {
        strayed = true;
        directory.reset();
    }
    co_return told;
}

Task<> Session::CarryOutSteps(std::vector<Command> commands, std::size_t checks,
                              const std::vector<Command>& steps, bool asks_where) {
    const auto sent = co_await Send(std::move(commands));
    if (!sent) co_return sent;
    const auto checked = co_await ReadChecks(*this, checks, LeavesDirectory::Yes);
    if (!checked) co_return checked;
    bool moved = false;
    for (const Command& step : steps) {
        const auto reply = co_await ReceiveFinal(deadlines.reply);
        if (!reply) co_return Fail(reply.error());
        if (ChangesSomething(step.line)) risk.done = true;
        moved |= LeadsElsewhere(step) && reply->Completed();
        if (reply->Completed()) continue;
        const Failure refusal = RefusalOf(*reply);
        ChangesSomething(step.line) ? events.NotMade(refusal) : events.Trouble(refusal);
    }
    if (!asks_where) co_return Result<>{};
    const auto where = co_await ReceiveFinal(deadlines.reply);
    if (!where) co_return Fail(where.error());
    TakeDirectory(moved, *where);
    co_return Result<>{};
}

void Session::TakeDirectory(bool moved, const Reply& reply) {
    strayed |= moved;
    // A server that says things twice is not to be asked two things at once.
    if (reply.code != 257 && !reply.Refused()) habits.one_at_a_time = true;
    const auto told = ParseDirectory(reply);
    if (told || moved || !directory) directory = told.value_or(std::string());
}

void Session::AbortTransfer() {
    called_off = true;
    if (transfer != nullptr) {
        transfer->Abort();
    } else if (call_off) {
        call_off();
    }
}

bool Session::Stopping() const {
    return dropped || (transfer != nullptr && transfer->Aborted());
}

void Session::Drop() {
    dropped = true;
    logged_in = false;
    ForgetWayBack();
    transport.CancelConnect();
    if (control) control->Close();
    if (transfer != nullptr) transfer->CloseData();
    if (call_off) call_off();
}

void Session::Forget() {
    control.reset();
    logged_in = false;
    tls_version.clear();
    features = {};
    type = 0;
    next_port.reset();
}

void Session::ForgetWayBack() {
    access.reset();
    strayed = false;
    directory.reset();
    habits = {};
    put_off.clear();
    unchecked.clear();
}

}  // namespace ftp
