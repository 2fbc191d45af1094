// Runs a fuzz target over every file of the folders that are named, so that a corpus is a test with any compiler.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

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
      const std::filesystem::recursive_directory_iterator below(folder);
      std::set<std::filesystem::path> files(begin(below), end(below));
      std::erase_if(files, [](const auto& path) { return !std::filesystem::is_regular_file(path); });
      std::for_each(files.begin(), files.end(), Replay);
      count += files.size();
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
