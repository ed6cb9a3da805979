// What the readers take without complaint although hardly anybody can have meant it. A reader of files that others made has to
// get on with it; whoever is about to pass the content on may want to know.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tessaret {

struct ParseOddity {
  enum class Kind {
    kCutByView,    // a value longer than the item or sequence around it, with which it ends
    kWrongLength,  // a sequence or an item that ends elsewhere than its length says
    kElementInSequence,  // a data element where only items belong; it lands in the object that holds the sequence
    kItemOutside,    // an item that is in no sequence; it lands in the element before it
    kStrayFragment,  // something other than an item among the fragments of pixel data; it is dropped
    kNotASequence,  // an undefined length in an element of a type that has none; it is read as a sequence
    kStrayDelimiter,  // a delimiter outside all sequences
    kNoLetters,  // two zero bytes where the letters of the type belong; the dictionary has the type
    kTwice,      // an element of a tag that was there already, which it replaces
  };
  static constexpr std::size_t kKinds = 9;

  Kind kind = Kind::kCutByView;
  // Stream offset of the element or item, modulo 4 GiB like Buffer::Position.
  std::uint64_t position = 0;
  std::uint16_t group = 0;
  std::uint16_t element = 0;

  friend bool operator==(const ParseOddity&, const ParseOddity&) = default;
};

/// The first oddity of each kind, in the order in which they came.
class ParseOddities {
 public:
  void Note(const ParseOddity& oddity) {
    for (const ParseOddity& known : All()) {
      if (known.kind == oddity.kind) return;
    }
    first_[count_++] = oddity;
  }
  void Clear() { count_ = 0; }
  [[nodiscard]] std::span<const ParseOddity> All() const { return {first_.data(), count_}; }

 private:
  std::array<ParseOddity, ParseOddity::kKinds> first_{};
  std::size_t count_ = 0;
};

}  // namespace tessaret
