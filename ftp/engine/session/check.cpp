#include "ftp/engine/session/check.h"

#include <utility>

#include "ftp/engine/wire/directory.h"

namespace ftp {
namespace {

/// Whether the server has another size for a file than was sent.
bool Differs(const Reply& reply, std::int64_t bytes) {
    const auto size = ParseSizeReply(reply);
    return size && *size != bytes;
}

/// Whether nothing is left to ask about the file.
bool Settle(Session& session, Unchecked& file, const Reply& reply, LeavesDirectory leaves) {
    if (!Differs(reply, file.bytes) || file.overwritten) return true;
    const std::string directory = session.directory.value_or(std::string());
    const bool out_of_reach = leaves == LeavesDirectory::Yes && directory.empty();
    if (file.doubted || out_of_reach) {
        session.events.NotKept(file.label, Failure{FailureKind::NotKept, 0, file.remote});
        return true;
    }
    file.doubted = true;
    if (leaves == LeavesDirectory::Yes) file.remote = Below(directory, file.remote);
    return false;
}

}  // namespace

bool CanCheck(const Session& session) {
    return session.features.size;
}

std::vector<Command> CheckQuestions(const Session& session) {
    std::vector<Command> questions;
    for (const Unchecked& file : session.unchecked) {
        auto question = MakeCommand("SIZE", file.remote);
        questions.push_back(question ? std::move(*question) : *MakeCommand("NOOP"));
    }
    return questions;
}

void TakeChecks(Session& session, const std::vector<Reply>& replies, LeavesDirectory leaves) {
    std::vector<Unchecked> left;
    for (std::size_t i = 0; i < session.unchecked.size(); ++i) {
        Unchecked& file = session.unchecked[i];
        if (i >= replies.size() || !Settle(session, file, replies[i], leaves))
            left.push_back(std::move(file));
    }
    session.unchecked = std::move(left);
}

Task<> ReadChecks(Session& session, std::size_t count, LeavesDirectory leaves) {
    std::vector<Reply> replies;
    while (replies.size() < count) {
        auto reply = co_await session.ReceiveFinal(session.deadlines.reply);
        if (!reply) co_return Fail(reply.error());
        replies.push_back(std::move(*reply));
    }
    TakeChecks(session, replies, leaves);
    co_return Result<>{};
}

Task<> CheckAll(Session& session) {
    if (!session.control) co_return Fail(FailureKind::NotConnected);
    while (!session.unchecked.empty()) {
        const auto replies = co_await session.Exchange(CheckQuestions(session));
        if (!replies) co_return Fail(replies.error());
        TakeChecks(session, *replies);
    }
    co_return Result<>{};
}

Task<> CheckNow(Session& session, std::string remote, std::int64_t bytes) {
    for (int times = 0; times < 2; ++times) {
        if (!CanCheck(session)) co_return Result<>{};
        const auto reply = co_await session.Ask("SIZE", remote);
        if (!reply) co_return Fail(reply.error());
        if (!Differs(*reply, bytes)) co_return Result<>{};
    }
    co_return Fail(FailureKind::NotKept, remote);
}

}  // namespace ftp
