#include "ftp/engine/net/resolver.h"

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <asio/local/stream_protocol.hpp>
#include <asio/redirect_error.hpp>
#include <asio/this_coro.hpp>
#include <asio/use_awaitable.hpp>
#include <atomic>
#include <cstring>
#include <memory>
#include <thread>

namespace ftp {
namespace {

using Endpoints = std::vector<asio::ip::tcp::endpoint>;

/// Blocks; for the look-up's own thread.
Endpoints AddressesOf(const HostAndPort& where) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(where.host.c_str(), nullptr, &hints, &found) != 0) return {};
    Endpoints endpoints;
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
        asio::ip::tcp::endpoint endpoint;
        if (entry->ai_addrlen > endpoint.capacity()) continue;
        std::memcpy(endpoint.data(), entry->ai_addr, entry->ai_addrlen);
        endpoint.resize(entry->ai_addrlen);
        endpoint.port(where.port);
        endpoints.push_back(endpoint);
    }
    ::freeaddrinfo(found);
    return endpoints;
}

/// The families take turns, beginning with the first address's.
Endpoints Interleave(const Endpoints& endpoints) {
    if (endpoints.empty()) return {};
    const bool first_is_v6 = endpoints.front().address().is_v6();
    Endpoints turns[2];
    for (const auto& endpoint : endpoints)
        turns[endpoint.address().is_v6() == first_is_v6 ? 0 : 1].push_back(endpoint);
    Endpoints mixed;
    for (std::size_t i = 0; i < std::max(turns[0].size(), turns[1].size()); ++i) {
        for (const auto& family : turns) {
            if (i < family.size()) mixed.push_back(family[i]);
        }
    }
    return mixed;
}

/// What the look-up's thread leaves behind. It holds nothing of the worker, which may be gone when it ends.
struct Answer {
    Endpoints endpoints;
    std::atomic<bool> done = false;
};

}  // namespace

Task<Endpoints> LookUp(HostAndPort where, std::function<void()>& cancel) {
    asio::error_code not_numeric;
    const auto numeric = asio::ip::make_address(where.host, not_numeric);
    if (!not_numeric) co_return Endpoints{{numeric, where.port}};

    // The thread tells that it is done by closing its end of a socket pair.
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        co_return Fail(FailureKind::HostNotFound, where.host);
    asio::local::stream_protocol::socket done(co_await asio::this_coro::executor,
                                              asio::local::stream_protocol(), ends[0]);
    auto answer = std::make_shared<Answer>();
    std::thread([answer, where, own_end = ends[1]] {
        answer->endpoints = AddressesOf(where);
        answer->done = true;
        ::close(own_end);
    }).detach();

    cancel = [&done] {
        asio::error_code ignored;
        done.close(ignored);
    };
    asio::error_code woken;
    co_await done.async_wait(asio::socket_base::wait_read, asio::redirect_error(asio::use_awaitable, woken));
    cancel = nullptr;
    if (!answer->done) co_return Fail(FailureKind::Cancelled);
    if (answer->endpoints.empty()) co_return Fail(FailureKind::HostNotFound, where.host);
    co_return Interleave(answer->endpoints);
}

}  // namespace ftp
