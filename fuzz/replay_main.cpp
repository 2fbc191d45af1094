// Runs a fuzz target over every file of the folders that are named, so that a corpus is a test with any compiler.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> FilesBelow(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

void Replay(const std::filesystem::path& file) {
  // Said before the run: a crash then leaves the name of its input as the last line.
  std::cout << file.string() << std::endl;
  std::ifstream in(file, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  const std::vector<std::uint8_t> data(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(data.data(), data.size());
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::size_t count = 0;
    for (const std::string& folder : std::vector<std::string>(argv + 1, argv + argc)) {
      for (const std::filesystem::path& file : FilesBelow(folder)) {
        Replay(file);
        ++count;
      }
    }
    if (count == 0) {
      std::cerr << "the corpus is empty\n";
      return 1;
    }
    std::cout << count << " inputs\n";
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
