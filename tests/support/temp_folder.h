// A folder of a test's own, gone with all that is in it when the test ends.
#pragma once

#include <filesystem>
#include <string>

namespace tessaret::test {

class TempFolder {
 public:
  TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder();

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
  /// The path of `name` in the folder, whether or not it is there.
  [[nodiscard]] std::string File(const std::string& name) const { return (path_ / name).string(); }
  /// The names of all that is in the folder, in ascending order.
  [[nodiscard]] std::string Listing() const;

 private:
  std::filesystem::path path_;
};

}  // namespace tessaret::test
