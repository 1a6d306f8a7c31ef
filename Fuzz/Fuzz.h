// Declarations that all fuzzers use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string_view>

// libFuzzer calls this function with each input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vel::fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Aborts the process if `condition` is false, so that libFuzzer keeps the input.
template <class... Parts>
void require(bool condition, const Parts&... message) {
  if (!condition) {
    (std::cerr << ... << message) << std::endl;
    std::abort();
  }
}

}  // namespace vel::fuzz
