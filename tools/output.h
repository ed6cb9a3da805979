// Standard output, where results go. Every write is checked: a result that did not arrive is no result.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace tessaret::tool {

/// Standard output cannot be written. The number is the system's.
class OutputError : public std::runtime_error {
 public:
  explicit OutputError(int error);
  [[nodiscard]] int Number() const { return number_; }

 private:
  int number_;
};

class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  /// What waits is lost: see Flush.
  ~Output() = default;

  /// Adds text, which goes out in larger portions. Throws OutputError, and Interrupted.
  void Write(std::string_view text);
  void Line(std::string_view text) {
    Write(text);
    Write("\n");
  }

  /// Sends what waits. Throws as above.
  void Flush();

  /// Sends what waits and closes the descriptor, since some file systems tell only then that the bytes have no room. A
  /// descriptor that nothing was written to is left alone. Throws as above.
  void Close();

 private:
  void Send(std::string_view bytes);

  std::string waiting_;
  bool used_ = false;
};

}  // namespace tessaret::tool
