#pragma once
// A server that follows a script, at the other end of streams in memory. The script is a table of steps in
// the order of the wire; a play of it may go wrong, or have somebody call for an abort, at any step.

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ftp/engine/net/stream.h"

namespace ftp_script {

struct Step {
    enum class Kind {
        Connects,
        Command,
        Reply,
        HangsUp,
        DataConnects,
        DataCalls,
        Sends,
        Ends,
        Takes,
        TakesEnd
    };
    Kind kind;
    std::string bytes;
    std::uint16_t port = 0;
    bool may_be_refused = false;  // the sequence goes on without
    bool beside = false;          // what runs meanwhile has its outcome without
    bool over = false;            // what could be aborted is over

    bool IsData() const { return kind >= Kind::DataConnects; }
};
using Steps = std::vector<Step>;

/// The client opens the control connection.
Step Connects();
/// The client sends this line.
Step Command(const std::string& line);
/// The server sends this reply; several lines are set apart by CR LF.
Step Reply(const std::string& lines);
/// The same, where the sequence goes on after a refusal.
Step Optional(const std::string& lines);
/// An answer to what was asked ahead, for the next transfer: the one before it is over.
Step Beside(const std::string& lines);
/// The step, where the transfer itself is over.
Step Over(Step step);
/// The server closes the control connection.
Step HangsUp();
/// The client opens a data connection to this port.
Step DataConnects(std::uint16_t port);
/// The server opens a data connection to the client.
Step DataCalls();
/// The server sends on the data connection; ends it; takes these bytes of the client; takes their end.
Step Sends(const std::string& bytes);
Step Ends();
Step Takes(const std::string& bytes);
Step TakesEnd();

/// The two sides of a TLS handshake, as a script has them: a Command and a Reply of the control connection,
/// or what is taken and sent on a data connection.
inline const std::string kClientHello = "(client hello)";
inline const std::string kServerHello = "(server hello)";

enum class Fault {
    None,
    Close,    // the server closes all connections in order
    Reset,    // the server has crashed
    Goodbye,  // 421, then Close
    Refuse,   // 500 to what is unanswered and to all that comes
    Silence,  // nothing more is read or sent, or connected
    Stall,    // nothing moves on the data connection any more
};
std::string Name(Fault fault);

struct Play {
    static constexpr std::size_t kNever = static_cast<std::size_t>(-1);

    std::size_t fault_at = kNever;
    Fault fault = Fault::None;
    std::size_t call_at = kNever;
    std::function<void()> call{};   // what somebody does at this step, from outside of the sequence
    bool stops_at_call = false;     // the script stands still from then on; otherwise it goes on meanwhile
    std::size_t piece = 64 * 1024;  // at most so many bytes of a reply or of data arrive at once
    bool doubled = false;           // every reply is sent twice
    /// What the server answers to ABOR while it owes the end of a transfer.
    std::vector<std::string> abort_replies{"426 Aborted", "226 Done"};
};

/// The server. When its script has ended, or has been left, it answers NOOP with 200, ABOR as the play says,
/// "CWD after" with "250 after" and everything else with 500.
class Script : public ftp::Transport {
 public:
    Script(asio::io_context& context, Steps steps);
    ~Script() override;

    /// How the steps from here on are played.
    void Follow(Play play);
    /// Bytes on the control connection that nobody asked for; and how many of all have not been read yet.
    void Interject(const std::string& bytes);
    std::size_t Unheard() const { return control_->to_client.size(); }
    /// Whether every step was carried out.
    bool Completed() const { return next_ == steps_.size(); }
    /// What the client did that the script did not foresee.
    const std::string& Surprise() const { return surprise_; }

    asio::any_io_executor Executor() override { return context_.get_executor(); }
    ftp::Task<std::unique_ptr<ftp::Stream>> ConnectControl(ftp::HostAndPort where) override;
    std::string PeerAddress() const override { return "127.0.0.1"; }
    ftp::Result<std::unique_ptr<ftp::Stream>> StartData(std::uint16_t port) override;
    ftp::Result<std::unique_ptr<ftp::Listener>> Listen() override;
    std::unique_ptr<ftp::SecureStream> SecureControl(std::unique_ptr<ftp::Stream> plain,
                                                     const std::string& host) override;
    std::unique_ptr<ftp::Stream> SecureData(std::unique_ptr<ftp::Stream> plain) override;
    void CancelConnect() override;

    /// One connection, as both ends see it.
    struct Pipe {
        explicit Pipe(asio::io_context& context) : moved(context) {}

        std::string to_client, to_server;
        bool stands = false;          // the server has accepted it
        bool server_ended = false;    // nothing more will come
        bool server_crashed = false;  // nothing more will come, in a bad way
        bool client_ended = false;
        bool client_closed = false;
        asio::steady_timer moved;  // cancelled when any of these has changed
        std::size_t piece = 0;
    };
    /// Called when the client has done something.
    void Advance();

 private:
    enum class Mode { Following, Free, Silent, Gone };

    bool CarryOut(const Step& step);
    std::optional<std::string> NextLine() const;
    bool TakeCommand(const std::string& line);
    void Say(const std::string& lines);
    void Misbehave();
    void Leave();
    bool HoldsTransfers() const;
    void AnswerFreely();
    void End(bool crashed);

    asio::io_context& context_;
    Steps steps_;
    Play play_;
    std::size_t next_ = 0;
    std::size_t start_ = 0;  // where the play began
    Mode mode_ = Mode::Following;
    bool called_ = false;
    std::string surprise_;
    int owed_ = 1;           // the greeting, and commands taken, that have no final reply yet
    bool transfer_ = false;  // one of them is LIST, RETR or STOR
    int due_before_ = 0;     // replies that come before its own
    std::shared_ptr<Pipe> control_, data_;
    std::optional<std::uint16_t> data_port_;  // that the client has connected to
    bool listening_ = false;                  // the client is
    bool cancelled_ = false;
    asio::steady_timer connecting_;
};

}  // namespace ftp_script
