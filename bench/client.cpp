// The engine as a command-line client, to be measured beside others.
//
//   client HOST[:PORT] [COMMAND]...
//
//   list [FOLDER]                        enters the folder and lists it
//   enter FOLDER
//   get NAME LOCAL, put LOCAL NAME
//   tree LOCAL [LANES]                   sends a folder with all that is in it, as the program does
//   fetch LOCALFOLDER LANES SIZE NAME... fetches files of SIZE bytes each, as a listing has told, in one run;
//                                        @LISTFILE stands for the names in its lines
//
// LANES is the number of further connections (0: none). Logs in as demo/demo, carries out the commands,
// prints the milliseconds of each, exits non-zero when one failed.

#include <algorithm>
#include <atomic>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <semaphore>
#include <span>
#include <string>
#include <vector>

#include "ftp/engine/worker.h"

namespace {

namespace fs = std::filesystem;

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
            Fail(problem->failure);
        } else if (const auto* of_file = std::get_if<ftp::FileProblem>(&notification.what)) {
            Fail(of_file->failure);
        } else if (std::holds_alternative<ftp::Finished>(notification.what)) {
            finished_.release();
        }
    }

    void Fail(const ftp::Failure& failure) {
        std::fprintf(stderr, "failed: %d %s\n", failure.code, failure.detail.c_str());
        failed_ = true;
    }

    std::binary_semaphore finished_{0};
    std::size_t lines_ = 0;
    std::atomic<bool> failed_ = false;  // in a run a file may fail while the next command is on its way
    std::uint64_t request_ = 0;
    ftp::Worker worker_{[this](const ftp::Notification& notification) { On(notification); }};
};

std::vector<fs::path> EntriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    for (const auto& entry : fs::directory_iterator(folder)) entries.push_back(entry.path());
    std::ranges::sort(entries);
    return entries;
}

/// Sends a folder into the current one: its files first, then its subfolders, and back.
void SendFolder(Client& client, const fs::path& folder) {
    const std::string name = folder.filename().string();
    client.Run(ftp::MakeDirectory{name});
    client.Run(ftp::ChangeDirectory{name});
    const std::vector<fs::path> entries = EntriesOf(folder);
    for (const fs::path& entry : entries) {
        if (client.Failed()) return;
        if (!fs::is_directory(entry)) client.Run(ftp::Store{entry.string(), entry.filename().string()});
    }
    for (const fs::path& entry : entries) {
        if (client.Failed()) return;
        if (fs::is_directory(entry)) SendFolder(client, entry);
    }
    client.Run(ftp::ChangeToParent{});
}

std::vector<std::string> Names(std::span<char*> words) {
    std::vector<std::string> names;
    for (const std::string word : words) {
        if (!word.starts_with('@')) {
            names.push_back(word);
            continue;
        }
        std::ifstream list(word.substr(1));
        for (std::string line; std::getline(list, line);) names.push_back(line);
    }
    return names;
}

void Fetch(Client& client, const fs::path& folder, std::int64_t size, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (client.Failed()) return;
        client.Run(ftp::Retrieve{.remote = name, .local_path = (folder / name).string(), .size = size});
    }
}

/// Milliseconds from the run's begin until everything in it is over.
double InRun(Client& client, std::size_t lanes, const auto& work) {
    const auto start = std::chrono::steady_clock::now();
    client.Run(ftp::BeginRun{lanes});
    work();
    client.Run(ftp::EndRun{});
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void Report(const std::string& what, double milliseconds) {
    std::printf("%s %.3f\n", what.c_str(), milliseconds);
}

bool IsNumber(const std::string& word) {
    return !word.empty() && std::ranges::all_of(word, [](unsigned char c) { return std::isdigit(c) != 0; });
}

/// Carries out the first command; returns how many words it took, 0 when it is none.
std::size_t Carry(Client& client, std::span<char*> words) {
    const std::string verb = words[0];
    const std::size_t left = words.size() - 1;
    if (verb == "list") {
        if (left > 0) client.Run(ftp::ChangeDirectory{words[1]});
        Report("list", client.Run(ftp::List{}));
        std::printf("lines %zu\n", client.Lines());
        return left > 0 ? 2 : 1;
    }
    if (verb == "enter" && left >= 1) {
        Report("enter", client.Run(ftp::ChangeDirectory{words[1]}));
        return 2;
    }
    if (verb == "get" && left >= 2) {
        Report("get", client.Run(ftp::Retrieve{words[1], words[2]}));
        return 3;
    }
    if (verb == "put" && left >= 2) {
        Report("put", client.Run(ftp::Store{words[1], words[2]}));
        return 3;
    }
    if (verb == "tree" && left >= 1) {
        const bool stated = left >= 2 && IsNumber(words[2]);
        const std::size_t lanes = stated ? std::stoul(words[2]) : ftp::BeginRun{}.lanes;
        fs::path folder = fs::path(words[1]).lexically_normal();
        if (!folder.has_filename()) folder = folder.parent_path();  // a slash at the end
        Report("tree", InRun(client, lanes, [&] { SendFolder(client, folder); }));
        return stated ? 3 : 2;
    }
    if (verb == "fetch" && left >= 4 && IsNumber(words[2]) && IsNumber(words[3])) {
        const std::int64_t size = std::stoll(words[3]);
        const std::vector<std::string> names = Names(words.subspan(4));
        Report("fetch", InRun(client, std::stoul(words[2]), [&] { Fetch(client, words[1], size, names); }));
        return words.size();
    }
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    std::span<char*> words(arguments + 1, arguments + count);
    if (words.empty()) return 2;
    Client client;
    Report("login", client.Run(ftp::Connect{words[0], "demo", "demo", ""}));
    bool understood = true;
    for (words = words.subspan(1); understood && !words.empty() && !client.Failed();) {
        const std::size_t taken = Carry(client, words);
        understood = taken > 0;
        words = words.subspan(taken);
    }
    client.Run(ftp::Quit{});
    if (!understood) std::fprintf(stderr, "no command, or too few words: %s\n", words[0]);
    return !understood ? 2 : client.Failed() ? 1 : 0;
}
