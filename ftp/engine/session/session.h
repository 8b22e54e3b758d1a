#pragma once
// What one session knows, and the small steps that its sequences share. Worker's thread.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ftp/engine/net/stream.h"
#include "ftp/engine/session/control.h"
#include "ftp/engine/session/deadlines.h"
#include "ftp/engine/session/events.h"
#include "ftp/engine/wire/features.h"

namespace ftp {

class Transfer;
struct Access;

/// What experience with this server has shown.
struct Habits {
    bool one_at_a_time = false;  // minds commands that are sent ahead of an answer
    bool overtakes = false;      // answers a command while the one before it still runs
    bool refuses_epsv = false;
    bool refuses_pasv = false;
};

/// An upload that the server has confirmed and whose size there is still to be compared with what was sent.
struct Unchecked {
    std::string remote;  // as seen from the current directory
    std::int64_t bytes = 0;
    std::string label;         // what the user knows it by
    bool doubted = false;      // the server has said another size once
    bool overwritten = false;  // another file has its name by now: whatever the server says means nothing
};

/// Whether what the server has been asked to change may have been changed.
struct Risk {
    bool sent = false;  // a command that changes something is under way
    bool done = false;  // one has been answered
    bool None() const { return !sent && !done; }
};

struct Session {
    Session(Transport& transport_in, LocalFiles& files_in, Events& events_in, const Deadlines& deadlines_in)
        : transport(transport_in), files(files_in), events(events_in), deadlines(deadlines_in) {}

    /// Whether a login stands (the server may have closed it since; the next exchange shows).
    bool LoggedIn() const { return logged_in && control; }
    /// The same, and the server has not gone as far as is known.
    bool Alive() const { return LoggedIn() && control->Open(); }

    /// Sends the commands in one packet.
    Task<> Send(std::vector<Command> commands);
    /// Sends commands together, or one by one where the server minds, and returns their replies in order.
    Task<std::vector<Reply>> Exchange(std::vector<Command> commands);

    /// Whether control and data connections are protected by TLS.
    bool Encrypted() const { return !tls_version.empty(); }

    /// Sends one command and returns its reply whatever it is; preliminary replies are read past.
    Task<Reply> Ask(std::string_view verb, std::string_view argument = {});
    /// Sends one command that must be answered 2xx; otherwise Refused.
    Task<> Do(std::string_view verb, std::string_view argument = {});
    /// NOOP, which has to be answered soon; else the connection is closed.
    asio::awaitable<void> KeepAwake();
    /// Sends what a run has put off, all in one packet, and reads the answers; refusals are told as trouble.
    /// Sizes that are to be checked are asked for in front, and where a step leads elsewhere, PWD behind.
    Task<> CatchUp();
    /// What the server says to PWD, after steps of which some have succeeded or not.
    void TakeDirectory(bool moved, const Reply& reply);
    /// The reply that ends the oldest command under way; preliminary replies are read past. A 421, with which
    /// the server ends the session, is Refused. It ends the connection, and so does a reply that is late:
    /// were it to come after all, the next command would take it for its own.
    Task<Reply> ReceiveFinal(std::chrono::milliseconds limit);

    /// Ends the running transfer at the next chance, and the pause and the login before its next try;
    /// nothing without one.
    void AbortTransfer();
    /// Whether what runs is to end.
    bool Stopping() const;
    /// Closes everything at once, for good; what runs ends as Cancelled.
    void Drop();
    /// Close and forget what holds for this connection only.
    void Forget();
    /// Forget what a further connection to this server would go by.
    void ForgetWayBack();

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

    // The way back, which outlives a connection that the server has ended (Reopen):
    std::shared_ptr<const Access> access;  // null: there is none
    bool strayed = false;                  // the current directory is not the one of the login
    /// The current one, without the steps that have been put off: absolute; empty where the server does not
    /// tell, or not so that it can be relied on; nothing where it has not been asked for.
    std::optional<std::string> directory;

    // Of a run, in which transfers follow one another:
    bool in_run = false;
    std::vector<Command> put_off;            // steps between folders, which leave with what follows them
    std::optional<std::uint16_t> next_port;  // asked for ahead, with the transfer before
    std::vector<Unchecked> unchecked;        // the sizes of these are asked for with what follows

    // Of the running operation; who begins one clears them:
    Risk risk;
    bool heard = false;  // the server has answered something

    Transfer* transfer = nullptr;    // the running one, if any
    std::function<void()> call_off;  // ends what a further try waits for, while it waits
    bool called_off = false;         // AbortTransfer has come: there is no further try
    bool dropped = false;            // Drop was called and the running operation has not ended yet

 private:
    Task<> CarryOutSteps(std::vector<Command> commands, std::size_t checks, const std::vector<Command>& steps,
                         bool asks_where);
};

}  // namespace ftp
