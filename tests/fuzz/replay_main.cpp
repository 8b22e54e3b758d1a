// Runs a fuzz target over the files of its corpus, each whole and cut short, so that no build is without it.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "tests/fuzz/fuzz.h"

namespace {

std::vector<std::uint8_t> ReadAll(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Every beginning of a short file, about 200 beginnings of a long one, and always the whole.
void Replay(const std::vector<std::uint8_t>& bytes) {
    const std::size_t step = bytes.size() / 200 + 1;
    for (std::size_t size = 0; size < bytes.size(); size += step) LLVMFuzzerTestOneInput(bytes.data(), size);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    int files = 0;
    for (int i = 1; i < argc; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::printf("%s\n", entry.path().filename().c_str());
            std::fflush(stdout);  // names the culprit when a property is broken
            Replay(ReadAll(entry.path()));
            ++files;
        }
    fuzz::Require(files > 0, "the corpus has files");
}
