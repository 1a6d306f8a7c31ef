// What every fuzzer is made of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string_view>

// What is called with each input; libFuzzer's name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vel::fuzz {

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Ends the process, so that the input is kept, where a fact does not hold.
template <class... Parts>
void require(bool holds, const Parts&... whatIsWrong) {
  if (!holds) {
    (std::cerr << ... << whatIsWrong) << std::endl;
    std::abort();
  }
}

}  // namespace vel::fuzz
