#include "ftp/engine/session/session.h"

#include <utility>

#include "ftp/engine/session/transfer.h"

namespace ftp {

Task<Reply> Session::ReceiveFinal(std::chrono::milliseconds limit) {
    for (;;) {
        auto reply = co_await control->Receive(limit);
        if (reply && reply->Preliminary()) continue;
        const bool goodbye = reply && reply->code == 421;
        const bool late = !reply && reply.error().kind == FailureKind::TimedOut;
        if (goodbye || late) control->Close();
        if (goodbye) co_return Fail(RefusalOf(*reply));
        co_return reply;
    }
}

Task<Reply> Session::Ask(std::string_view verb, std::string_view argument) {
    if (!control) co_return Fail(FailureKind::NotConnected);
    auto command = MakeCommand(verb, argument);
    if (!command) co_return Fail(command.error());
    std::vector<Command> commands;
    commands.push_back(std::move(*command));
    const auto sent = co_await control->Send(std::move(commands));
    if (!sent) co_return Fail(sent.error());
    co_return co_await ReceiveFinal(deadlines.reply);
}

Task<> Session::Do(std::string_view verb, std::string_view argument) {
    const auto reply = co_await Ask(verb, argument);
    if (!reply) co_return Fail(reply.error());
    if (!reply->Completed()) co_return Fail(RefusalOf(*reply));
    co_return Result<>{};
}

Task<> Session::CatchUp() {
    if (put_off.empty()) co_return Result<>{};
    if (!control) co_return Fail(FailureKind::NotConnected);
    const std::size_t due = put_off.size();
    const auto sent = co_await control->Send(std::exchange(put_off, {}));
    if (!sent) co_return sent;
    co_return co_await ReadPutOff(due);
}

Task<Reply> Session::CatchUp(Command last) {
    if (!control) co_return Fail(FailureKind::NotConnected);
    const std::size_t due = put_off.size();
    put_off.push_back(std::move(last));
    const auto sent = co_await control->Send(std::exchange(put_off, {}));
    if (!sent) co_return Fail(sent.error());
    const auto read = co_await ReadPutOff(due);
    if (!read) co_return Fail(read.error());
    co_return co_await ReceiveFinal(deadlines.reply);
}

Task<> Session::ReadPutOff(std::size_t due) {
    for (; due > 0; --due) {
        const auto reply = co_await ReceiveFinal(deadlines.reply);
        if (!reply) co_return Fail(reply.error());
        if (!reply->Completed()) events.Trouble(RefusalOf(*reply));
    }
    co_return Result<>{};
}

void Session::AbortTransfer() {
    if (transfer != nullptr) transfer->Abort();
}

bool Session::Stopping() const {
    return dropped || (transfer != nullptr && transfer->Aborted());
}

void Session::Drop() {
    dropped = true;
    logged_in = false;
    transport.CancelConnect();
    if (control) control->Close();
    if (transfer != nullptr) transfer->CloseData();
}

void Session::Forget() {
    control.reset();
    logged_in = false;
    tls_version.clear();
    features = {};
    habits = {};
    type = 0;
    put_off.clear();
    next_port.reset();
    directory.reset();
}

}  // namespace ftp
