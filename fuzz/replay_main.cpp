// Takes files through a fuzz target without libFuzzer: replay FILE|DIR...
// A finding shows as it does under the fuzzer: by a sanitizer, an assertion or a crash. Ends with 0 when every file
// came through, with 1 when there was none to replay or one could not be read.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

/// Returns the files below `root` (or `root` itself, a file) in the order of their names.
std::vector<fs::path> FilesBelow(const fs::path& root) {
  std::vector<fs::path> files;
  if (!fs::is_directory(root)) {
    files.push_back(root);
    return files;
  }
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool Replay(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(in),
                                std::istreambuf_iterator<char>()};
  if (!in.is_open() || in.bad()) {
    std::fprintf(stderr, "%s: cannot be read\n", file.c_str());
    return false;
  }
  // The name goes out first: it is what a crash leaves behind.
  std::printf("%s: %zu bytes\n", file.c_str(), bytes.size());
  std::fflush(stdout);
  // An exact copy, so that a read past the end is a read outside of an allocation.
  const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(input.data(), input.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t replayed = 0;
  std::size_t failed = 0;
  for (int i = 1; i < argc; ++i) {
    for (const fs::path& file : FilesBelow(argv[i])) {
      Replay(file) ? ++replayed : ++failed;
    }
  }
  std::printf("%zu files replayed, %zu could not be read\n", replayed, failed);
  return replayed > 0 && failed == 0 ? 0 : 1;
}
