#include "tests/soak/faulty_proxy.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/redirect_error.hpp>
#include <asio/steady_timer.hpp>
#include <asio/use_awaitable.hpp>
#include <asio/write.hpp>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>

namespace soak {
namespace {

using asio::ip::tcp;
using namespace std::chrono_literals;

/// What befalls one direction of a connection.
struct Plan {
    enum class Kind { None, Slow, Split, Close, Reset, Cut, Stall };
    Kind kind = Kind::None;
    std::size_t after = 0;               // bytes; Close and what follows it
    std::size_t piece = 64 * 1024;       // bytes at once
    std::chrono::milliseconds delay{0};  // before each piece

    bool Ends() const { return kind >= Kind::Close; }
};

void Break(tcp::socket& socket) {
    asio::error_code ignored;
    socket.set_option(asio::socket_base::linger(true, 0), ignored);
    socket.close(ignored);
}

void End(tcp::socket& socket) {
    asio::error_code ignored;
    socket.shutdown(tcp::socket::shutdown_both, ignored);
    socket.close(ignored);
}

/// Whether the peer has gone, also where nobody reads what it had sent before. `end_is_enough`: it has said
/// that nothing more will come.
bool HasLeft(tcp::socket& socket, bool end_is_enough) {
    pollfd asked{socket.native_handle(), static_cast<short>(end_is_enough ? POLLRDHUP : 0), 0};
    return !socket.is_open() || (poll(&asked, 1, 0) > 0 && asked.revents != 0);
}

/// The port of a 227 or 229 reply, and where in the line it stands.
struct PortInLine {
    std::uint16_t port;
    std::size_t begin, end;
    bool extended;
};

std::optional<PortInLine> FindPort(const std::string& line) {
    const auto open = line.find('(');
    if (open == line.npos) return std::nullopt;
    int used = 0;
    unsigned port = 0, high = 0, low = 0;
    const char* text = line.c_str() + open;
    if (line.starts_with("229 ") && std::sscanf(text, "(|||%u|)%n", &port, &used) == 1 && used > 0)
        return PortInLine{static_cast<std::uint16_t>(port), open, open + static_cast<std::size_t>(used),
                          true};
    if (line.starts_with("227 ") && std::sscanf(text, "(%*u,%*u,%*u,%*u,%u,%u)%n", &high, &low, &used) == 2 &&
        used > 0)
        return PortInLine{static_cast<std::uint16_t>(high * 256 + low), open,
                          open + static_cast<std::size_t>(used), false};
    return std::nullopt;
}

std::string WithPort(const std::string& line, const PortInLine& found, std::uint16_t port) {
    const std::string group =
        found.extended ? "(|||" + std::to_string(port) + "|)"
                       : "(127,0,0,1," + std::to_string(port / 256) + ',' + std::to_string(port % 256) + ')';
    return line.substr(0, found.begin) + group + line.substr(found.end);
}

/// Two sockets, and what hangs on them.
struct Link {
    explicit Link(asio::io_context& io) : client(io), server(io) {}

    void Reset() {
        Break(client);
        Break(server);
        CloseListeners();
    }
    void Close() {
        End(client);
        End(server);
        CloseListeners();
    }
    void CloseListeners() {
        asio::error_code ignored;
        for (const auto& listener : listeners) listener->close(ignored);
        listeners.clear();
    }

    tcp::socket client, server;
    bool is_data = false;
    std::list<std::shared_ptr<tcp::acceptor>> listeners;  // of a control connection, for its data connections
    std::string line;                                     // of the server, so far
};

using LinkPtr = std::shared_ptr<Link>;

}  // namespace

struct FaultyProxy::State : std::enable_shared_from_this<State> {
    explicit State(const Options& given)
        : options(given),
          random(given.seed),
          acceptor(io, tcp::endpoint(asio::ip::address_v4::loopback(), 0)),
          port(acceptor.local_endpoint().port()) {}

    asio::awaitable<void> AcceptControl();
    asio::awaitable<void> AcceptData(std::shared_ptr<tcp::acceptor> listener, std::uint16_t server_port);
    asio::awaitable<void> Join(tcp::socket client, std::uint16_t server_port, bool is_data);
    asio::awaitable<void> Pump(LinkPtr link, bool down, Plan plan);
    asio::awaitable<bool> HandOn(LinkPtr link, bool down, std::string bytes, Plan plan);
    asio::awaitable<void> Misbehave(LinkPtr link, bool down, Plan plan);
    asio::awaitable<void> Stall(LinkPtr link, bool down);
    std::string Rewrite(Link& link, const std::string& bytes);
    std::uint16_t OpenDataPort(Link& link, std::uint16_t server_port);
    Plan AnyPlan(bool is_data, bool down);
    std::size_t Below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
    }

    Options options;
    std::mt19937 random;
    asio::io_context io;
    tcp::acceptor acceptor;
    const std::uint16_t port;
    std::list<std::weak_ptr<Link>> links;
    std::atomic<bool> calm{false};
    std::atomic<std::uint64_t> faults{0};
    std::atomic<std::size_t> connections{0};
    std::thread thread;
};

/// Most connections are left alone; of the others some are only uneven, some end.
Plan FaultyProxy::State::AnyPlan(bool is_data, bool down) {
    Plan plan;
    const std::size_t chance = Below(100);
    const std::size_t untouched = is_data ? 74 : 88;
    if (calm || chance < untouched) return plan;
    static constexpr std::array kKinds{Plan::Kind::Slow,  Plan::Kind::Split, Plan::Kind::Split,
                                       Plan::Kind::Close, Plan::Kind::Close, Plan::Kind::Reset,
                                       Plan::Kind::Reset, Plan::Kind::Cut,   Plan::Kind::Stall};
    plan.kind = kKinds[Below(kKinds.size())];
    if (plan.kind == Plan::Kind::Cut && !is_data) plan.kind = Plan::Kind::Close;
    const bool is_upload = is_data && !down;
    if (is_upload && !options.cuts_uploads) {
        if (plan.kind == Plan::Kind::Cut) plan.kind = Plan::Kind::Reset;
        if (plan.Ends() && options.server_is_trusting) plan.kind = Plan::Kind::Stall;
    }
    const double magnitude = std::uniform_real_distribution<>(0, is_data ? 6.3 : 3.6)(random);
    plan.after = static_cast<std::size_t>(std::pow(10, magnitude)) - 1;
    if (plan.kind == Plan::Kind::Split) plan.piece = is_data ? 100 + Below(3000) : 1 + Below(12);
    if (plan.kind == Plan::Kind::Slow) plan.delay = std::chrono::milliseconds(1 + Below(15));
    return plan;
}

asio::awaitable<void> FaultyProxy::State::AcceptControl() {
    for (;;) {
        asio::error_code error;
        tcp::socket client = co_await acceptor.async_accept(asio::redirect_error(asio::use_awaitable, error));
        if (error) co_return;
        asio::co_spawn(io, Join(std::move(client), options.server_port, false), asio::detached);
    }
}

asio::awaitable<void> FaultyProxy::State::AcceptData(std::shared_ptr<tcp::acceptor> listener,
                                                     std::uint16_t server_port) {
    asio::error_code error;
    tcp::socket client = co_await listener->async_accept(asio::redirect_error(asio::use_awaitable, error));
    if (!error) co_await Join(std::move(client), server_port, true);
}

asio::awaitable<void> FaultyProxy::State::Join(tcp::socket client, std::uint16_t server_port, bool is_data) {
    const auto link = std::make_shared<Link>(io);
    link->client = std::move(client);
    link->is_data = is_data;
    asio::error_code error;
    co_await link->server.async_connect({asio::ip::address_v4::loopback(), server_port},
                                        asio::redirect_error(asio::use_awaitable, error));
    if (error) {
        link->Reset();
        co_return;
    }
    for (tcp::socket* socket : {&link->client, &link->server}) socket->set_option(tcp::no_delay(true), error);
    std::erase_if(links, [](const auto& each) { return each.expired(); });
    links.push_back(link);
    connections += 1;
    const auto ends = std::make_shared<int>(2);
    for (const bool down : {false, true})
        asio::co_spawn(io, Pump(link, down, AnyPlan(is_data, down)),
                       [this, link, ends](const std::exception_ptr& fault) {
                           if (fault) std::abort();
                           if (--*ends > 0) return;
                           link->Close();
                           connections -= 1;
                       });
}

/// One direction, until its end.
asio::awaitable<void> FaultyProxy::State::Pump(LinkPtr link, bool down, Plan plan) {
    tcp::socket& from = down ? link->server : link->client;
    tcp::socket& to = down ? link->client : link->server;
    std::array<char, 64 * 1024> buffer;
    for (std::size_t moved = 0;;) {
        const std::size_t left = plan.Ends() ? plan.after + 1 - moved : buffer.size();
        const auto room = asio::buffer(buffer.data(), std::min(left, std::min(plan.piece, buffer.size())));
        asio::error_code error;
        const std::size_t got =
            co_await from.async_read_some(room, asio::redirect_error(asio::use_awaitable, error));
        if (error == asio::error::eof) {
            to.shutdown(tcp::socket::shutdown_send, error);
            co_return;
        }
        if (error) co_return link->Reset();
        moved += got;
        const bool ends = plan.Ends() && moved > plan.after;
        std::string bytes(buffer.data(), got - (ends ? 1 : 0));
        const bool handed_on = co_await HandOn(link, down, std::move(bytes), plan);
        if (!handed_on) co_return link->Reset();
        if (ends) co_return co_await Misbehave(link, down, plan);
    }
}

asio::awaitable<bool> FaultyProxy::State::HandOn(LinkPtr link, bool down, std::string bytes, Plan plan) {
    if (down && !link->is_data) bytes = Rewrite(*link, bytes);
    asio::error_code error;
    if (plan.delay > 0ms) {
        asio::steady_timer timer(io, plan.delay);
        co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, error));
    }
    tcp::socket& to = down ? link->client : link->server;
    while (!bytes.empty()) {
        const auto piece = asio::buffer(bytes.data(), std::min(bytes.size(), plan.piece));
        const std::size_t put =
            co_await asio::async_write(to, piece, asio::redirect_error(asio::use_awaitable, error));
        if (error) co_return false;
        bytes.erase(0, put);
    }
    co_return true;
}

asio::awaitable<void> FaultyProxy::State::Misbehave(LinkPtr link, bool down, Plan plan) {
    faults += 1;
    if (plan.kind == Plan::Kind::Stall) co_return co_await Stall(link, down);
    if (plan.kind == Plan::Kind::Reset) co_return link->Reset();
    if (plan.kind == Plan::Kind::Cut) {
        End(down ? link->client : link->server);  // as if that had been all
        Break(down ? link->server : link->client);
        co_return link->CloseListeners();
    }
    End(link->client);
    link->is_data ? Break(link->server) : End(link->server);
    link->CloseListeners();
}

/// Nothing moves in this direction any more, until one of the two gives up.
asio::awaitable<void> FaultyProxy::State::Stall(LinkPtr link, bool down) {
    const bool is_upload = link->is_data && !down;  // whose end does not say that its sender has given up
    asio::steady_timer timer(io);
    while (!HasLeft(link->client, !is_upload) && !HasLeft(link->server, true)) {
        timer.expires_after(20ms);
        asio::error_code ignored;
        co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, ignored));
    }
    link->Reset();
}

/// Whole lines of the server's, with our ports in place of its own.
std::string FaultyProxy::State::Rewrite(Link& link, const std::string& bytes) {
    std::string result;
    for (const char c : bytes) {
        link.line += c;
        if (c != '\n') continue;
        if (const auto found = FindPort(link.line))
            link.line = WithPort(link.line, *found, OpenDataPort(link, found->port));
        result += std::exchange(link.line, {});
    }
    return result;
}

std::uint16_t FaultyProxy::State::OpenDataPort(Link& link, std::uint16_t server_port) {
    constexpr std::size_t kMostAtOnce = 4;
    auto listener = std::make_shared<tcp::acceptor>(io, tcp::endpoint(asio::ip::address_v4::loopback(), 0));
    const std::uint16_t opened = listener->local_endpoint().port();
    link.listeners.push_back(listener);
    if (link.listeners.size() > kMostAtOnce) {
        link.listeners.front()->close();
        link.listeners.pop_front();
    }
    asio::co_spawn(io, AcceptData(std::move(listener), server_port), asio::detached);
    return opened;
}

FaultyProxy::FaultyProxy(const Options& options) : state_(std::make_shared<State>(options)) {
    asio::co_spawn(state_->io, state_->AcceptControl(), asio::detached);
    state_->thread = std::thread([state = state_.get()] { state->io.run(); });
}

FaultyProxy::~FaultyProxy() {
    asio::post(state_->io, [state = state_.get()] {
        state->acceptor.close();
        for (const auto& each : state->links)
            if (const auto link = each.lock()) link->Reset();
    });
    state_->thread.join();
}

std::uint16_t FaultyProxy::Port() const {
    return state_->port;
}
void FaultyProxy::SetCalm(bool calm) {
    state_->calm = calm;
}
std::uint64_t FaultyProxy::Faults() const {
    return state_->faults;
}
std::size_t FaultyProxy::Connections() const {
    return state_->connections;
}

void FaultyProxy::EndAll(bool in_order) {
    asio::post(state_->io, [state = state_.get(), in_order] {
        state->faults += 1;
        for (const auto& each : state->links)
            if (const auto link = each.lock()) in_order ? link->Close() : link->Reset();
    });
}

}  // namespace soak
