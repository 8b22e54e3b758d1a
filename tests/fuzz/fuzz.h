#pragma once
// What the fuzz targets share. A target defines LLVMFuzzerTestOneInput and asserts properties with Require.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// Ends the program with a message when a property does not hold; in release builds too.
inline void Require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "broken property: %s\n", property);
    std::abort();
}

inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

}  // namespace fuzz
