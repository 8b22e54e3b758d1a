// A long-distance link between two network namespaces: packets read from a TUN device in one leave through a
// TUN device in the other after a delay, at a rate, and not all of them if loss is asked for. Real TCP stacks
// stand at both ends, so that a round trip costs what it costs. Needs root.
//
//   link CLIENT_NAMESPACE SERVER_NAMESPACE ONE_WAY_DELAY_MS [RATE_MBIT [LOSS_PERCENT]]
//
// Prints "ready" when the devices (wan0 in each namespace, without addresses) exist; runs until killed.

#include <fcntl.h>
#include <linux/if.h>
#include <linux/if_tun.h>
#include <poll.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <random>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::nanoseconds;

[[noreturn]] void Die(const std::string& what) {
    std::perror(what.c_str());
    std::exit(1);
}

int OpenTunIn(const std::string& network_namespace) {
    const int space = open(("/run/netns/" + network_namespace).c_str(), O_RDONLY | O_CLOEXEC);
    if (space < 0 || setns(space, CLONE_NEWNET) != 0) Die("network namespace " + network_namespace);
    close(space);
    const int device = open("/dev/net/tun", O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ifreq request{};
    request.ifr_flags = IFF_TUN | IFF_NO_PI;
    std::strcpy(request.ifr_name, "wan0");
    if (device < 0 || ioctl(device, TUNSETIFF, &request) != 0) Die("TUN device");
    return device;
}

struct Line {
    nanoseconds delay;
    double nanoseconds_per_byte;
    double loss;
};

/// One direction of the link.
class Direction {
 public:
    Direction(int from, int to, Line line) : from_(from), to_(to), line_(line) {}

    int From() const { return from_; }

    void TakeIn() {
        std::array<char, 65536> bytes;
        for (ssize_t got; (got = read(from_, bytes.data(), bytes.size())) > 0;) {
            if (chance_(random_) < line_.loss || queue_.size() > kQueue) continue;
            const auto on_the_line = nanoseconds(static_cast<long>(line_.nanoseconds_per_byte * double(got)));
            free_ = std::max(free_, Clock::now()) + on_the_line;
            queue_.push_back({free_ + line_.delay, {bytes.data(), bytes.data() + got}});
        }
    }

    /// Sends what has arrived; returns when the next packet does.
    Clock::time_point PassOn() {
        while (!queue_.empty() && queue_.front().due <= Clock::now()) {
            const std::vector<char>& packet = queue_.front().bytes;
            [[maybe_unused]] const ssize_t put =
                write(to_, packet.data(), packet.size());  // a full device is a loss
            queue_.pop_front();
        }
        return queue_.empty() ? Clock::time_point::max() : queue_.front().due;
    }

 private:
    static constexpr std::size_t kQueue = 20'000;  // packets; a router's buffer
    struct Packet {
        Clock::time_point due;
        std::vector<char> bytes;
    };

    int from_, to_;
    Line line_;
    Clock::time_point free_{};  // when the line can take the next packet
    std::deque<Packet> queue_;
    std::minstd_rand random_{1};
    std::uniform_real_distribution<> chance_{0, 100};
};

}  // namespace

int main(int count, char** arguments) {
    if (count < 4) {
        std::fprintf(
            stderr,
            "usage: link CLIENT_NAMESPACE SERVER_NAMESPACE ONE_WAY_DELAY_MS [RATE_MBIT [LOSS_PERCENT]]\n");
        return 2;
    }
    const double rate = count > 4 ? std::atof(arguments[4]) : 0;
    const Line line{.delay = nanoseconds(static_cast<long>(std::atof(arguments[3]) * 1e6)),
                    .nanoseconds_per_byte = rate > 0 ? 8000 / rate : 0,
                    .loss = count > 5 ? std::atof(arguments[5]) : 0};
    const int client = OpenTunIn(arguments[1]);
    const int server = OpenTunIn(arguments[2]);
    std::puts("ready");
    std::fflush(stdout);

    Direction up(client, server, line), down(server, client, line);
    for (;;) {
        const auto next = std::min(up.PassOn(), down.PassOn());
        std::array<pollfd, 2> waiting{{{up.From(), POLLIN, 0}, {down.From(), POLLIN, 0}}};
        const auto wait =
            std::max(nanoseconds(0), std::min<nanoseconds>(next - Clock::now(), std::chrono::seconds(1)));
        const timespec limit{0, static_cast<long>(std::min<long>(wait.count(), 999'999'999))};
        ppoll(waiting.data(), waiting.size(), &limit, nullptr);
        up.TakeIn();
        down.TakeIn();
    }
}
