#include "saved_files.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "support.h"

namespace tessaret::fuzz {
namespace {

namespace fs = std::filesystem;

/// A folder in memory of this run's own.
class Folder {
 public:
  Folder() : path_("/dev/shm/tessaret-fuzz-" + std::to_string(::getpid())) {
    fs::create_directories(path_);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  [[nodiscard]] std::string File() const { return path_ / "saved"; }
  [[nodiscard]] bool IsEmpty() const { return fs::is_empty(path_); }

 private:
  fs::path path_;
};

void RequireFile(const Folder& folder, const std::vector<std::uint8_t>* bytes, bool saved) {
  Require(saved == (bytes != nullptr), "a file is saved or refused as a stream is");
  if (saved) {
    std::ifstream file(folder.File(), std::ios::binary);
    const std::vector<char> found{std::istreambuf_iterator<char>(file), {}};
    Require(std::equal(found.begin(), found.end(), bytes->begin(), bytes->end(),
                       [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }),
            "a file holds what goes into a stream");
    fs::remove(folder.File());
  }
  Require(folder.IsEmpty(), "nothing else is left behind");
}

}  // namespace

void RequireSameInFiles(DataSetCoder& coder, const DICOMObject& object,
                        const std::vector<std::uint8_t>* bytes) {
  static const Folder folder;
  const std::unique_ptr<DICOMObject> clone(object.Clone(false));
  const std::string path = folder.File();
  RequireFile(folder, bytes, coder.SaveFile(path.c_str(), 3, *clone));
  RequireFile(folder, bytes, coder.SaveKeeping(path.c_str(), 3, object));
}

}  // namespace tessaret::fuzz
