// Runs a fuzzer on files. The arguments are files, or folders with files.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "Fuzz/Fuzz.h"

namespace {

void replay(const std::filesystem::path& file) {
  std::cout << file.string() << std::endl;  // the last printed file is the one that fails
  std::ifstream in(file, std::ios::binary);
  const std::string input{std::istreambuf_iterator<char>(in), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int count, char** arguments) {
  int replayed = 0;
  for (int index = 1; index < count; ++index) {
    const std::filesystem::path path = arguments[index];
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
