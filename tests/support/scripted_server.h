#pragma once
// An FTP server on loopback that takes orders to misbehave.
//
// Left alone it is a small well-behaved server with one account and a few files in memory. A test states only
// what is to go differently:
//
//     ScriptedServer server;
//     server.AddFile("a.txt", "hej");
//     server.At("RETR", 2, {Say("150 Here it comes."), SendData("he"), ResetData(), Say("426 Broken.")});
//     server.At("PASV", {ListenData(), Say("227 Entering Passive Mode (10,9,8,7,%P)")});
//     server.At("PASS", {Pause(50ms), Proper()});
//
// All members may be called from any thread, also while sessions run. The destructor ends all sessions at
// once.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ftp_test {

class ScriptedSession;

/// How a script goes on after a step: with the next one; not at all, as an ABOR or QUIT waits to be answered;
/// or never more, as the session has ended.
enum class Next { Go, Interrupted, End };
using Step = std::function<Next(ScriptedSession&)>;
using Script = std::vector<Step>;

constexpr std::size_t kAll = 1'000'000'000;

// The steps. On the control connection:
/// How a reply, line ends included, is sent; scripted_manners.h has some.
using Manner = std::function<Next(ScriptedSession&, const std::string& reply)>;
Step Replies(Manner manner, int which = 0);  // so are the replies sent that follow in this script: the
                                             // `which`-th of the command, counted from 1; 0: each
Step Proper();                               // what a well-behaved server does with the command
Step Say(std::string line);         // a line; its "\r\n" is added. %p: the listening data port, as in
                                    // an EPSV reply; %P: the same as in a PASV reply, "78,90"
Step Raw(std::string bytes);        // just these bytes
Step SayForever(std::string line);  // the line again and again
Step Pause(std::chrono::milliseconds duration);
Step Hold();      // until Release() is called, once for each Hold
Step Stall();     // until the client aborts or leaves
Step Close();     // ends the session in good order
Step Reset();     // ends it with a TCP reset
Step StartTls();  // the handshake, where the server has PutTls; the session ends when it fails
Step RawPlain(std::string bytes);  // past TLS, onto the wire
// On the data connection; those that send or take open it first where it is not open yet:
Step ListenData();  // makes the port of %p and %P
Step RefuseData();  // makes a port where nobody listens
Step BlockData();   // makes a port where connecting never ends
Step OpenData();    // accepts, or connects where the client sent PORT or EPRT
Step SendData(std::string bytes);
Step SendDataForever(std::string bytes);  // until the client leaves the data connection
Step SendFile(std::size_t bytes = kAll);  // of the file that is asked for, from where REST says; again: the
                                          // bytes behind those
Step KeepData(std::size_t bytes = kAll);  // puts what it takes into the file that the client sends
Step TakeData(std::size_t bytes);         // this many; less when the client ends before
Step CloseData();
Step DropData();   // closes it without a close_notify
Step PlainData();  // no TLS on this transfer's, though it was asked for
Step ResetData();

/// The command that a session begins with: its answer is the greeting.
inline const std::string kConnect = "(connect)";

class ScriptedServer {
 public:
    /// Listens at once, on a free port. Throws std::system_error.
    explicit ScriptedServer(const std::string& address = "127.0.0.1");
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    std::uint16_t Port() const;
    /// "127.0.0.1:40001", "[::1]:40001".
    std::string HostField() const;

    /// What is done at the command that begins with `prefix`, in place of the proper thing. The later order
    /// wins.
    void At(const std::string& prefix, Script script) { At(prefix, 0, std::move(script)); }
    /// The same for its `occurrence` only, counted from 1 over all sessions; 0 means each.
    void At(const std::string& prefix, int occurrence, Script script);
    /// The same once, at the next such command of any session.
    void AtNext(const std::string& prefix, Script script);
    /// Lets one Hold go on, the present or the next.
    void Release();

    /// From now on AUTH TLS, PBSZ and PROT are understood, with this certificate and key (PEM files).
    void PutTls(const std::filesystem::path& certificate, const std::filesystem::path& key);

    void AddFile(const std::string& name, const std::string& bytes);
    void RemoveFile(const std::string& name);
    /// The bytes of a file, also of one that the client has stored; nothing without it.
    std::optional<std::string> File(const std::string& name) const;
    /// The lines of every listing; without them a line for each file.
    void SetListing(const std::vector<std::string>& lines);

    /// Every command received so far, in order, without its line end.
    std::vector<std::string> Commands() const;
    /// Waits for a command that begins with `prefix`, the `occurrence`-th since the start. False when it did
    /// not come within 30 seconds.
    bool WaitFor(const std::string& prefix, int occurrence = 1) const;

 private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace ftp_test
