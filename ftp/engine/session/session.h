#pragma once
// What one session knows, and the small steps that its sequences share. Worker's thread.

#include <memory>
#include <optional>
#include <string_view>

#include "ftp/engine/net/stream.h"
#include "ftp/engine/session/control.h"
#include "ftp/engine/session/deadlines.h"
#include "ftp/engine/session/events.h"
#include "ftp/engine/wire/features.h"

namespace ftp {

class Transfer;

/// What experience with this server has shown.
struct Habits {
    bool one_at_a_time = false;  // minds commands that are sent ahead of an answer
    bool overtakes = false;      // answers a command while the one before it still runs
    bool refuses_epsv = false;
    bool refuses_pasv = false;
    bool refuses_size = false;
};

struct Session {
    Session(Transport& transport_in, LocalFiles& files_in, Events& events_in, const Deadlines& deadlines_in)
        : transport(transport_in), files(files_in), events(events_in), deadlines(deadlines_in) {}

    /// Whether a login stands (the server may have closed it since; the next exchange shows).
    bool LoggedIn() const { return logged_in && control; }

    /// Whether control and data connections are protected by TLS.
    bool Encrypted() const { return !tls_version.empty(); }

    /// Sends one command and returns its reply whatever it is; preliminary replies are read past.
    Task<Reply> Ask(std::string_view verb, std::string_view argument = {});
    /// Sends one command that must be answered 2xx; otherwise Refused.
    Task<> Do(std::string_view verb, std::string_view argument = {});
    /// Sends what a run has put off, all in one packet, and reads the answers; refusals are told as trouble.
    Task<> CatchUp();
    /// The same, and `last` leaves with it: its reply, whatever it is.
    Task<Reply> CatchUp(Command last);
    /// The reply that ends the oldest command under way; preliminary replies are read past. A 421, with which
    /// the server ends the session, is Refused. It ends the connection, and so does a reply that is late:
    /// were it to come after all, the next command would take it for its own.
    Task<Reply> ReceiveFinal(std::chrono::milliseconds limit);

    /// Ends the running transfer at the next chance; nothing without one.
    void AbortTransfer();
    /// Whether what runs is to end.
    bool Stopping() const;
    /// Closes everything at once; what runs ends as Cancelled.
    void Drop();
    /// Close and forget this server.
    void Forget();

    Task<> ReadPutOff(std::size_t due);

    Transport& transport;
    LocalFiles& files;
    Events& events;
    const Deadlines& deadlines;

    std::unique_ptr<Control> control;
    bool logged_in = false;
    std::string tls_version;  // "TLSv1.3"; empty: the session is plain text
    Features features;
    Habits habits;
    char type = 0;  // 'A' or 'I' as the server has accepted it, 0 before

    // Of a run, in which transfers follow one another:
    bool in_run = false;
    std::vector<Command> put_off;            // steps between folders, which leave with what follows them
    std::optional<std::uint16_t> next_port;  // asked for ahead, with the transfer before
    std::optional<std::string> directory;  // the current one, where it has been asked for (CurrentDirectory)

    Transfer* transfer = nullptr;  // the running one, if any
    bool dropped = false;          // Drop was called and the running operation has not ended yet
};

}  // namespace ftp
