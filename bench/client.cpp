// The engine as a command-line client, to be measured beside others.
//
//   client HOST[:PORT] [login | list [FOLDER] | get NAME LOCAL | put LOCAL NAME]...
//
// Logs in as demo/demo, carries out the commands, prints the milliseconds of each, exits non-zero when one
// failed.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <semaphore>
#include <span>
#include <string>

#include "ftp/engine/worker.h"

namespace {

class Client {
 public:
    /// Milliseconds until the operation was over.
    double Run(ftp::Operation operation) {
        const auto start = std::chrono::steady_clock::now();
        worker_.Start({.id = ++request_, .operation = std::move(operation)});
        finished_.acquire();
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    }
    bool Failed() const { return failed_; }
    std::size_t Lines() const { return lines_; }

 private:
    void On(const ftp::Notification& notification) {
        if (const auto* batch = std::get_if<ftp::ListingBatch>(&notification.what)) {
            lines_ += batch->lines.size();
            worker_.BatchTaken();
        } else if (const auto* problem = std::get_if<ftp::Problem>(&notification.what)) {
            std::fprintf(stderr, "failed: %d %s\n", problem->failure.code, problem->failure.detail.c_str());
            failed_ = true;
        } else if (std::holds_alternative<ftp::Finished>(notification.what)) {
            finished_.release();
        }
    }

    std::binary_semaphore finished_{0};
    std::size_t lines_ = 0;
    bool failed_ = false;
    std::uint64_t request_ = 0;
    ftp::Worker worker_{[this](const ftp::Notification& notification) { On(notification); }};
};

}  // namespace

int main(int count, char** arguments) {
    std::span<char*> words(arguments + 1, arguments + count);
    if (words.empty()) return 2;
    Client client;
    const auto report = [](const std::string& what, double milliseconds) {
        std::printf("%s %.3f\n", what.c_str(), milliseconds);
    };
    report("login", client.Run(ftp::Connect{words[0], "demo", "demo", ""}));
    for (std::size_t i = 1; i < words.size() && !client.Failed();) {
        const std::string verb = words[i];
        const std::size_t left = words.size() - i - 1;
        if (verb == "list") {
            if (left > 0) client.Run(ftp::ChangeDirectory{words[i + 1]});
            report("list", client.Run(ftp::List{}));
            std::printf("lines %zu\n", client.Lines());
            i += left > 0 ? 2 : 1;
        } else if (verb == "get" && left >= 2) {
            report("get", client.Run(ftp::Retrieve{words[i + 1], words[i + 2]}));
            i += 3;
        } else if (verb == "put" && left >= 2) {
            report("put", client.Run(ftp::Store{words[i + 1], words[i + 2]}));
            i += 3;
        } else {
            break;
        }
    }
    client.Run(ftp::Quit{});
    return client.Failed() ? 1 : 0;
}
