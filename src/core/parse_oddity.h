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
    // A value longer than the item or sequence around it, with which it ends.
    kCutByView,
    // A sequence or an item that ends elsewhere than its length says.
    kWrongLength,
    // A data element where only items belong; it lands in the object that holds the sequence.
    kElementInSequence,
    // An item that is in no sequence; it lands in the element before it.
    kItemOutside,
    // Something other than an item among the fragments of pixel data; it is dropped.
    kStrayFragment,
    // An undefined length in an element of a type that has none; it is read as a sequence.
    kNotASequence,
    // An undefined length that ends with what is around it instead of by a delimiter.
    kNoDelimiter,
    // A delimiter outside all sequences.
    kStrayDelimiter,
    // A delimiter of the other kind than is due, or with a length; or a tag that is no item in the place of one.
    kWrongDelimiter,
    // A (0002,0010) behind the meta header; it is dropped.
    kLateSyntax,
    // Two zero bytes where the letters of the type belong; the dictionary has the type. Not noted of (0000,0000), as which zeros
    // behind a data set read.
    kNoLetters,
    // An element of a tag that was there already, which it replaces. Not noted of (0000,0000) either.
    kTwice,
  };
  static constexpr std::size_t kKinds = 12;

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
