#pragma once
// The bytes of a fuzz input, taken one decision at a time.

#include <algorithm>
#include <string_view>

namespace fuzz {

class Input {
 public:
    explicit Input(std::string_view bytes) : bytes_(bytes) {}

    bool UsedUp() const { return bytes_.empty(); }
    /// The next byte; 0 when there is none.
    unsigned Byte() {
        if (bytes_.empty()) return 0;
        const auto byte = static_cast<unsigned char>(bytes_.front());
        bytes_.remove_prefix(1);
        return byte;
    }
    /// One of so many, 0 first.
    unsigned Choice(unsigned count) { return Byte() % count; }
    /// The next bytes themselves, at most so many.
    std::string_view Take(std::size_t count) {
        const std::string_view taken = bytes_.substr(0, count);
        bytes_.remove_prefix(taken.size());
        return taken;
    }

 private:
    std::string_view bytes_;
};

}  // namespace fuzz
