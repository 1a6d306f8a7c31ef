// Feeds a fuzzer with files: those named, and those in the folders named.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "Fuzz/Fuzz.h"

namespace {

void replay(const std::filesystem::path& file) {
  std::cout << file.string() << std::endl;  // the last one named is the one that failed
  std::ifstream in(file, std::ios::binary);
  const std::string input{std::istreambuf_iterator<char>(in), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int count, char** arguments) {
  int replayed = 0;
  for (int place = 1; place < count; ++place) {
    const std::filesystem::path path = arguments[place];
    if (!std::filesystem::is_directory(path)) {
      replay(path);
      ++replayed;
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      replay(entry.path());
      ++replayed;
    }
  }
  std::cout << replayed << " inputs" << std::endl;
  return replayed > 0 ? 0 : 1;
}
