// What a sender of files tells, written down.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "services/store_sender.h"

namespace tessaret::test {

/// Writes down what it hears, files by their names alone.
class Heard : public StoreListener {
 public:
  void OnSent(const std::string& path, std::size_t index) override {
    Say("sent " + NameOf(path) + " " + std::to_string(index));
    if (afterEach) afterEach();
  }
  void OnError(const std::string& path, std::size_t index, const std::string& words) override {
    errors.push_back(words);
    Say("error " + NameOf(path) + " " + std::to_string(index));
    if (afterEach) afterEach();
  }
  void OnFinished(std::size_t sent, std::size_t failed) override {
    Say("finished " + std::to_string(sent) + " " + std::to_string(failed));
    if (atEnd) atEnd();
  }

  std::vector<std::string> lines;
  std::vector<std::string> errors;
  std::function<void()> afterEach;
  std::function<void()> atEnd;

 private:
  static std::string NameOf(const std::string& path) {
    return std::filesystem::path(path).filename().string();
  }
  void Say(const std::string& line) { lines.push_back(line); }
};

}  // namespace tessaret::test
