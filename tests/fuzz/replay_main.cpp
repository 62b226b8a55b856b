// SPDX-License-Identifier: GPL-2.0-or-later
// Feeds the files of folders to a fuzz target once each: the corpus as a test of every build, also
// where the compiler has no fuzzer.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> files;
  for (int index = 1; index < argc; ++index) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[index])) {
      files.push_back(entry.path());
    }
  }
  std::ranges::sort(files);
  for (const auto& path : files) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> text{std::istreambuf_iterator<char>(file), {}};
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  }
  std::printf("%zu inputs\n", files.size());
  // An empty corpus proves nothing.
  return files.empty() ? 1 : 0;
}
