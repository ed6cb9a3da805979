// Bytes as tests write them down and look at them. Files are read and written here by the standard library alone, so that
// what the library did is judged by something else.
#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Tests are not optimised: what goes through many bytes here does so by one call, or by a plain pointer.

namespace tessaret::test {

using Bytes = std::vector<std::uint8_t>;

/// The characters of `text`, embedded NULs included.
inline Bytes BytesOf(std::string_view text) {
  Bytes bytes(text.size());
  if (!text.empty()) std::memcpy(bytes.data(), text.data(), text.size());
  return bytes;
}

inline std::string TextOf(const Bytes& bytes) {
  return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

/// All parts, one behind the other.
inline Bytes Joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

/// `count` bytes in which neither a shift by a power of two nor a swap of blocks goes unseen: the top byte of a
/// multiplicative hash of each position.
inline Bytes Pattern(std::size_t count, std::uint32_t seed = 1) {
  Bytes bytes(count);
  std::uint8_t* const place = bytes.data();
  for (std::size_t at = 0; at < count; ++at) {
    place[at] = static_cast<std::uint8_t>(((at + seed) * 2654435761u) >> 24);
  }
  return bytes;
}

inline Bytes ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  Bytes bytes;
  // What has no size in advance, as a pipe, is read too.
  for (std::size_t size = 0, room = 65536;; room = size) {
    bytes.resize(size + room);
    file.read(reinterpret_cast<char*>(&bytes[size]), static_cast<std::streamsize>(room));
    if (file.bad()) throw std::runtime_error("cannot read on in " + path);
    size += static_cast<std::size_t>(file.gcount());
    if (file.eof()) {
      bytes.resize(size);
      return bytes;
    }
  }
}

inline std::string ReadText(const std::string& path) { return TextOf(ReadBytes(path)); }

inline void WriteBytes(const std::string& path, const Bytes& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

inline void WriteText(const std::string& path, std::string_view text) {
  WriteBytes(path, BytesOf(text));
}

}  // namespace tessaret::test
