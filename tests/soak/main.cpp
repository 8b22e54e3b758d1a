// Soak test: many operations against real servers through connections that are slow, torn, cut and broken.

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>

#include "tests/soak/soak.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr long kMostGrowth = 4096;  // KiB, from the end of the warm-up on

constexpr int kSkipped = 77;  // the exit status, as ctest knows it

struct Arguments {
    int operations = 10'000;
    int seconds = 0;  // 0: until all operations are done
    bool checks_memory = true;
    soak::Options options;
};

[[noreturn]] void Usage() {
    std::cerr
        << "usage: soak [--operations N] [--seconds S] [--seed N] [--servers NAME,...] [--no-memory-check]\n"
           "            [--cut-uploads] [--tell]\n";
    std::exit(2);
}

void ChooseServers(soak::Options& options, const std::string& names) {
    options.makes.clear();
    for (const ftp_test::Make make : ftp_test::AvailableServers())
        if (("," + names + ",").find("," + ftp_test::Name(make) + ",") != std::string::npos)
            options.makes.push_back(make);
    if (!options.makes.empty()) return;
    std::cerr << "none of these servers can run here\n";
    std::exit(kSkipped);
}

Arguments Parse(int argc, char** argv) {
    Arguments arguments;
    arguments.options.makes = ftp_test::AvailableServers();
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        const auto value = [&] { return ++i < argc ? std::string(argv[i]) : (Usage(), std::string()); };
        if (option == "--operations")
            arguments.operations = std::stoi(value());
        else if (option == "--seconds")
            arguments.seconds = std::stoi(value());
        else if (option == "--seed")
            arguments.options.seed = static_cast<unsigned>(std::stoul(value()));
        else if (option == "--servers")
            ChooseServers(arguments.options, value());
        else if (option == "--no-memory-check")
            arguments.checks_memory = false;
        else if (option == "--cut-uploads")
            arguments.options.cuts_uploads = true;
        else if (option == "--tell")
            arguments.options.tells = true;
        else
            Usage();
    }
    return arguments;
}

/// What the process has.
struct Footprint {
    long resident = 0;  // KiB
    long descriptors = 0;
};

Footprint FootprintAtRest(soak::Soak& soak) {
    soak.Rest();
    malloc_trim(0);
    long total = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    const auto open = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    soak.Connect();
    return {resident * sysconf(_SC_PAGESIZE) / 1024, static_cast<long>(open)};
}

/// False when memory or descriptors have been lost.
bool Compare(const Footprint& warm, const Footprint& now, bool checks_memory) {
    std::cout << "resident " << now.resident << " KiB, " << now.resident - warm.resident
              << " more than warm; " << now.descriptors << " descriptors, "
              << now.descriptors - warm.descriptors << " more\n";
    if (now.descriptors > warm.descriptors) return false;
    return !checks_memory || now.resident - warm.resident <= kMostGrowth;
}

void Print(const soak::Soak& soak) {
    std::cout << soak.Operations() << " operations, " << soak.Failed() << " failed, " << soak.Faults()
              << " faults, " << soak.Reconnected() << " reconnected, " << soak.Late() << " late, longest "
              << soak.Longest().count() << " ms, " << soak.Violations() << " violations" << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
    const Arguments arguments = Parse(argc, argv);
    std::cout << "seed " << arguments.options.seed << std::endl;
    soak::Soak soak(arguments.options);
    soak.Connect();
    const int warm_up = std::min(1000, arguments.operations / 3);
    const auto end = Clock::now() + std::chrono::seconds(arguments.seconds);
    std::optional<Footprint> warm;
    for (int next = 1000; soak.Operations() < arguments.operations;) {
        if (arguments.seconds > 0 && Clock::now() > end) break;
        soak.Step();
        if (!warm && soak.Operations() >= warm_up) warm = FootprintAtRest(soak);
        if (soak.Operations() < next) continue;
        Print(soak);
        next += 1000;
    }
    bool well = !warm || Compare(*warm, FootprintAtRest(soak), arguments.checks_memory);
    Print(soak);
    well &= soak.Violations() == 0 && soak.Operations() > 0;
    well &= !testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed();  // the client's own checks
    std::cout << (well ? "well" : "NOT WELL") << std::endl;
    return well ? 0 : 1;
}
