#include "converter.h"

#include <iconv.h>

#include <array>
#include <cerrno>
#include <map>
#include <utility>

namespace tessaret::tool {
namespace {

class Converter {
 public:
  Converter(const char* to, const char* from) : handle_(::iconv_open(to, from)) {}
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter() {
    if (IsThere()) ::iconv_close(handle_);
  }

  std::optional<std::string> Convert(std::string_view bytes) {
    if (!IsThere()) return std::nullopt;
    ::iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    std::string converted;
    char* in = const_cast<char*>(bytes.data());
    std::size_t left = bytes.size();
    bool isFlushed = false;
    while (!isFlushed) {
      isFlushed = left == 0;
      std::array<char, 256> block;
      char* out = block.data();
      std::size_t room = block.size();
      const std::size_t result = isFlushed ? ::iconv(handle_, nullptr, nullptr, &out, &room)
                                           : ::iconv(handle_, &in, &left, &out, &room);
      converted.append(block.data(), out);
      // What is converted to something alike is not the same any more.
      const bool isExact =
          result == 0 || (result == static_cast<std::size_t>(-1) && errno == E2BIG);
      if (!isExact) return std::nullopt;
      if (result != 0) isFlushed = false;
    }
    return converted;
  }

 private:
  // NOLINTNEXTLINE(performance-no-int-to-ptr): how the system says that there is none
  [[nodiscard]] bool IsThere() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  iconv_t handle_;
};

/// Opening one takes long; each thread keeps its own.
std::optional<std::string> Convert(const char* to, const char* from, std::string_view bytes) {
  thread_local std::map<std::pair<std::string_view, std::string_view>, Converter> converters;
  return converters.try_emplace({to, from}, to, from).first->second.Convert(bytes);
}

constexpr const char* kUtf8 = "UTF-8";

}  // namespace

std::optional<std::string> ToUtf8(const char* set, std::string_view bytes) {
  return Convert(kUtf8, set, bytes);
}

std::optional<std::string> FromUtf8(const char* set, std::string_view text) {
  return Convert(set, kUtf8, text);
}

}  // namespace tessaret::tool
