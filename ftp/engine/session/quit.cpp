#include "ftp/engine/session/quit.h"

#include "ftp/engine/net/deadline.h"

namespace ftp {

asio::awaitable<void> QuitSession(Session& session) {
    if (session.control) {
        Control& control = *session.control;
        const Deadline deadline(session.transport.Executor(), session.deadlines.quit,
                                [&control] { control.Close(); });
        [[maybe_unused]] const auto goodbye = co_await session.Ask("QUIT");
    }
    session.Forget();
}

}  // namespace ftp
