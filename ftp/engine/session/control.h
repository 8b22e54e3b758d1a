#pragma once
// The control connection: commands out, replies in, each reply matched with its command. Worker's thread.

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "ftp/engine/net/stream.h"
#include "ftp/engine/session/events.h"
#include "ftp/engine/wire/command.h"
#include "ftp/engine/wire/reply.h"

namespace ftp {

/// Several commands may leave together and be answered later; the trace still reads command, replies,
/// command, replies. Replies are read as they arrive, also while nobody waits for one.
class Control {
 public:
    enum class Reading {
        Freely,       // whatever comes
        WhatIsAsked,  // the answers that are due and nothing more, until Secure or ReadFreely
        NotYet,       // nothing, until Secure
    };

    /// Takes a stream that stands and begins to read it. `reply_limit`: how long one answer may take.
    Control(const asio::any_io_executor& executor, std::unique_ptr<Stream> stream, Events& events,
            std::chrono::milliseconds reply_limit, Reading reading = Reading::Freely);
    ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    /// Puts what `wrap` makes of the stream in its place, and waits until that stands. What has been said in
    /// plain text beyond the answers that were due may come from anybody, and ends the session (TlsFailed).
    Task<> Secure(const std::function<std::unique_ptr<Stream>(std::unique_ptr<Stream>)>& wrap);
    /// There will be no Secure.
    void ReadFreely();

    /// The one place where commands are sent: all of them in one packet.
    Task<> Send(std::vector<Command> commands);
    /// The next reply: the greeting, then those of the oldest command that is not answered to its end.
    /// TimedOut when the limit passes; ConnectionLost when the server has gone; Cancelled after Close.
    Task<Reply> Receive();
    Task<Reply> Receive(std::chrono::milliseconds limit);

    /// While a Watch lives, `on_reply` sees each reply when it arrives (Receive delivers it all the same),
    /// and `on_end` is called once when the connection ends. Replies that are already here are seen at once.
    class Watch {
     public:
        Watch(Control& control, std::function<void(const Reply&)> on_reply, std::function<void()> on_end);
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

     private:
        Control& control_;
    };

    /// Until EndInterruption, Receive ends as Cancelled, the one under way too; the connection lives on.
    void Interrupt();
    void EndInterruption();
    bool Open() const;
    /// Whether the greeting or the answer to a command is still to come.
    bool Owes() const;
    /// What has not been answered will not be: the next reply belongs to the next command.
    void Settle();
    void Close();

 private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace ftp
