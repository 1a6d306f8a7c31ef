// Runs a fuzzer on files, without libFuzzer. The arguments are files or folders of files.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "Fuzz/Fuzz.h"

namespace {

void replay(const std::filesystem::path& file) {
  std::cout << file.string() << std::endl;  // if the fuzzer fails, this line names the input
  std::ifstream stream(file, std::ios::binary);
  const std::string input{std::istreambuf_iterator<char>(stream), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

}  // namespace

int main(int count, char** arguments) {
  int inputCount = 0;
  for (int index = 1; index < count; ++index) {
    const std::filesystem::path path = arguments[index];
    if (!std::filesystem::is_directory(path)) {
      replay(path);
      ++inputCount;
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
      replay(entry.path());
      ++inputCount;
    }
  }
  std::cout << inputCount << " inputs" << std::endl;
  return inputCount > 0 ? 0 : 1;
}
