#include "ftp/engine/session/reopen.h"

#include "ftp/engine/session/interlude.h"
#include "ftp/engine/session/login.h"

namespace ftp {
namespace {

Task<> GoBack(Session& session) {
    if (!session.strayed) co_return Result<>{};
    const std::string directory = *session.directory;
    co_return co_await session.Do("CWD", directory);
}

Task<> LogInAndGoBack(Session& session, const Access& access) {
    const Habits known = session.habits;
    const auto logged_in = co_await Login(session, access);
    if (!logged_in) co_return logged_in;
    const bool slow = known.one_at_a_time || session.habits.one_at_a_time;
    session.habits = known;
    session.habits.one_at_a_time = slow;
    co_return co_await GoBack(session);
}

bool IsRefusal(const Failure& failure) {
    const bool for_now = failure.code == 421;
    return failure.kind == FailureKind::Refused && !for_now;
}

}  // namespace

bool CanReopen(const Session& session) {
    const bool knows_directory = !session.strayed || !session.directory.value_or(std::string()).empty();
    return session.access && knows_directory;
}

asio::awaitable<void> HearOut(Session& session) {
    constexpr std::chrono::milliseconds kWhatIsHere{0};
    bool says_more = session.control != nullptr;
    while (says_more) {
        const auto reply = co_await session.control->Receive(kWhatIsHere);
        says_more = reply.has_value();
    }
}

Task<> Reopen(Session& session) {
    if (!CanReopen(session)) co_return Fail(FailureKind::NotConnected);
    const Interlude interlude(session, [&session] {
        session.transport.CancelConnect();
        if (session.control) session.control->Close();
    });
    co_await HearOut(session);
    const auto access = session.access;
    auto outcome = co_await LogInAndGoBack(session, *access);
    if (interlude.CalledOff()) outcome = Fail(FailureKind::Cancelled);
    if (!outcome) session.Forget();
    if (!outcome && IsRefusal(outcome.error())) session.ForgetWayBack();
    co_return outcome;
}

}  // namespace ftp
