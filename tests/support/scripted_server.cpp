#include "tests/support/scripted_server.h"

#include <poll.h>

#include <list>
#include <thread>

#include "tests/support/scripted_session.h"

namespace ftp_test {

struct ScriptedServer::State {
    explicit State(const std::string& at) : address(at), listener(Socket::Listening(Endpoint(at, 0), 64)) {}

    std::string address;
    Socket listener;
    ScriptedWorld world;
    std::list<std::jthread> sessions;  // the host's own
    std::jthread host;

    void Serve() {
        for (;;) {
            pollfd polls[] = {{world.stop.Get(), POLLIN, 0}, {listener.Get(), POLLIN, 0}};
            poll(polls, 2, -1);
            if (polls[0].revents) return sessions.clear();
            if (Socket client = listener.Accept())
                sessions.emplace_back([this, accepted = std::move(client)]() mutable {
                    ScriptedSession(world, std::move(accepted)).Run();
                });
        }
    }
};

ScriptedServer::ScriptedServer(const std::string& address) : state_(std::make_unique<State>(address)) {
    state_->host = std::jthread([state = state_.get()] { state->Serve(); });
}

ScriptedServer::~ScriptedServer() {
    state_->world.stop.Raise();
}

std::uint16_t ScriptedServer::Port() const {
    return state_->listener.Local().Port();
}

std::string ScriptedServer::HostField() const {
    const bool ipv6 = state_->listener.Local().IsV6();
    return (ipv6 ? "[" + state_->address + "]" : state_->address) + ":" + std::to_string(Port());
}

void ScriptedServer::At(const std::string& prefix, int occurrence, Script script) {
    state_->world.Order(prefix, occurrence, std::move(script));
}

void ScriptedServer::AtNext(const std::string& prefix, Script script) {
    state_->world.OrderNext(prefix, std::move(script));
}

void ScriptedServer::PutTls(const std::filesystem::path& certificate, const std::filesystem::path& key) {
    state_->world.PutTls(TlsIdentity(certificate, key));
}

void ScriptedServer::Release() {
    state_->world.released.Raise();
}
void ScriptedServer::AddFile(const std::string& name, const std::string& bytes) {
    state_->world.SetFile(name, bytes);
}
std::optional<std::string> ScriptedServer::File(const std::string& name) const {
    return state_->world.File(name);
}
void ScriptedServer::SetListing(const std::vector<std::string>& lines) {
    state_->world.SetListing(lines);
}
std::vector<std::string> ScriptedServer::Commands() const {
    return state_->world.Commands();
}

bool ScriptedServer::WaitFor(const std::string& prefix, int occurrence) const {
    return state_->world.WaitFor(prefix, occurrence);
}

void ScriptedServer::RemoveFile(const std::string& name) {
    state_->world.SetFile(name, std::nullopt);
}

// --- the steps ---

namespace {

/// The same deed again and again, until something ends it.
Step Forever(Step step) {
    return [step = std::move(step)](ScriptedSession& session) {
        Next next;
        while ((next = step(session)) == Next::Go) {
        }
        return next;
    };
}

}  // namespace

Step Proper() {
    return &ScriptedSession::Proper;
}
Step Hold() {
    return &ScriptedSession::Hold;
}
Step Stall() {
    return &ScriptedSession::Stall;
}
Step Close() {
    return &ScriptedSession::Close;
}
Step Reset() {
    return &ScriptedSession::Reset;
}
Step RefuseData() {
    return &ScriptedSession::RefuseData;
}
Step BlockData() {
    return &ScriptedSession::BlockData;
}
Step OpenData() {
    return &ScriptedSession::OpenData;
}
Step CloseData() {
    return &ScriptedSession::CloseData;
}
Step DropData() {
    return &ScriptedSession::DropData;
}
Step PlainData() {
    return &ScriptedSession::PlainData;
}
Step StartTls() {
    return &ScriptedSession::StartTls;
}
Step ResetData() {
    return &ScriptedSession::ResetData;
}

Step ListenData() {
    return [](ScriptedSession& session) { return session.ListenData(); };
}
Step Say(std::string line) {
    return [line = std::move(line)](ScriptedSession& session) { return session.Say(line); };
}
Step Raw(std::string bytes) {
    return [bytes = std::move(bytes)](ScriptedSession& session) { return session.Raw(bytes); };
}
Step RawPlain(std::string bytes) {
    return [bytes = std::move(bytes)](ScriptedSession& session) { return session.SendPlain(bytes); };
}
Step Replies(Manner manner, int which) {
    return [manner = std::move(manner), which](ScriptedSession& session) {
        return session.Behave(manner, which);
    };
}
Step SayForever(std::string line) {
    return Forever(Say(std::move(line)));
}
Step Pause(std::chrono::milliseconds duration) {
    return [duration](ScriptedSession& session) { return session.Pause(duration); };
}
Step SendData(std::string bytes) {
    return [bytes = std::move(bytes)](ScriptedSession& session) { return session.SendData(bytes); };
}
Step SendDataForever(std::string bytes) {
    return [bytes = std::move(bytes)](ScriptedSession& session) {
        using namespace std::chrono_literals;
        Next next;
        do {
            next = session.SendData(bytes);
            if (next == Next::Go) next = session.Pause(0ms);  // looks whether the client aborts
        } while (next == Next::Go && session.DataStands());
        return next;
    };
}
Step SendFile(std::size_t bytes) {
    return [bytes](ScriptedSession& session) { return session.SendFile(bytes); };
}
Step KeepData(std::size_t bytes) {
    return [bytes](ScriptedSession& session) { return session.KeepData(bytes); };
}
Step TakeData(std::size_t bytes) {
    return [bytes](ScriptedSession& session) { return session.TakeData(bytes); };
}

}  // namespace ftp_test
