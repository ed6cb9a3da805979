#include "support.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace tessaret::fuzz {
namespace {

constexpr std::string_view kFewLines = R"(
{0x0002 0x0000 UL "Group Length"}
{0x0002 0x0010 UI "Transfer Syntax UID"}
{0x0008 0x0016 UI "SOP Class UID"}
{0x0008 0x0018 UI "SOP Instance UID"}
{0x0008 0x1140 SQ "Referenced Image Sequence"}
{0x0010 0x0010 PN "Patient's Name"}
{0x0028 0x0100 US "Bits Allocated"}
{0x7FE0 0x0010 OW "Pixel Data"}
)";

bool SameBytes(const VR& a, const VR& b) {
  if (a.Data == nullptr || b.Data == nullptr) return a.Data == b.Data;
  return std::memcmp(a.Data, b.Data, a.Length) == 0;
}

/// Whether the value that was `whole` was stepped over as it should be, or is the same.
bool SameBytesBesides(const VR& whole, const VR& stepped, std::uint32_t longest) {
  if (!stepped.IsSteppedOver) {
    const bool isFragment = whole.Group == kStructuralGroup && whole.Data != nullptr;
    return SameBytes(whole, stepped) && (!isFragment || whole.Length <= longest);
  }
  const bool isPixels = whole.Group == 0x7FE0 || whole.Group == kStructuralGroup;
  const auto first = stepped.FirstBytes();
  return isPixels && whole.Length > longest && whole.Data != nullptr && stepped.Data == nullptr &&
         first.size() == std::min(whole.Length, VR::kStartSize) &&
         std::ranges::equal(first, whole.FirstBytes().first(first.size()));
}

/// `sameBytes(vr, vr)` compares values.
template <class SameBytesOf>
void RequireSameElements(const DICOMObject& a, const DICOMObject& b, SameBytesOf sameBytes) {
  VR* one = a.GetFirstVR();
  VR* other = b.GetFirstVR();
  for (; one != nullptr && other != nullptr; one = a.GetNextVR(one), other = b.GetNextVR(other)) {
    Require(one->Key() == other->Key(), "equal tags");
    Require(one->Length == other->Length, "equal lengths");
    Require(one->TypeCode == other->TypeCode, "equal types");
    Require(one->StreamPosition == other->StreamPosition, "equal positions");
    Require(sameBytes(*one, *other), "equal values");
    Require((one->Items == nullptr) == (other->Items == nullptr), "both have items or none has");
    Require(one->ItemCount() == other->ItemCount(), "equal numbers of items");
    for (std::uint32_t at = 0; at < one->ItemCount(); ++at)
      RequireSameElements(*one->GetItem(at), *other->GetItem(at), sameBytes);
  }
  Require(one == nullptr && other == nullptr, "equal numbers of elements");
  Require(a.SequenceBytes == b.SequenceBytes, "equal estimates of sequence bytes");
}

std::size_t BytesIn(const DICOMObject& object) {
  std::size_t bytes = 0;
  object.Elements.ForEach([&](VR& vr) {
    if (vr.Data != nullptr) bytes += vr.Length;
    for (std::uint32_t at = 0; at < vr.ItemCount(); ++at) bytes += BytesIn(*vr.GetItem(at));
  });
  return bytes;
}

}  // namespace

void EndWith(const char* claim) {
  std::fprintf(stderr, "does not hold: %s\n", claim);
  std::abort();
}

const RTC* StandardDictionary() {
  static const RTC* const dictionary = [] {
    auto* loaded = new RTC;
    if (!loaded->AttachRTC(TESSARET_FUZZ_DICTIONARY)) {
      Require(loaded->AttachBytes(kFewLines.data(), kFewLines.size()), "the few lines load");
    }
    return loaded;
  }();
  return dictionary;
}

Input::Input(const std::uint8_t* data, std::size_t size) : bytes(data, size) {
  if (bytes.empty()) return;
  options = bytes.front();
  bytes = bytes.subspan(1);
}

std::int64_t DrippingBuffer::ReadBinary(void* data, std::uint32_t count) {
  if (bytes_.empty()) return -1;
  const std::size_t given = std::min<std::size_t>({count, most_, bytes_.size()});
  if (given != 0) std::memcpy(data, bytes_.data(), given);
  bytes_ = bytes_.subspan(given);
  return static_cast<std::int64_t>(given);
}

std::uint32_t DrippingBuffer::Available() {
  return Buffer::Available() + static_cast<std::uint32_t>(bytes_.size());
}

std::uint64_t DrippingBuffer::SuppliesAtMost() {
  return knowsSupply_ ? Available() : Buffer::SuppliesAtMost();
}

int CollectingBuffer::SendBinary(const void* data, std::uint32_t count) {
  const auto* from = static_cast<const std::uint8_t*>(data);
  bytes_.insert(bytes_.end(), from, from + count);
  return 1;
}

const std::vector<std::uint8_t>& CollectingBuffer::Written() {
  Flush();
  return bytes_;
}

MemoryFile::MemoryFile() : descriptor_(::memfd_create("input", 0)) {
  Require(descriptor_ >= 0, "a file in memory can be had");
  std::snprintf(path_, sizeof path_, "/proc/self/fd/%d", descriptor_);
}

MemoryFile::~MemoryFile() { ::close(descriptor_); }

void MemoryFile::Hold(std::span<const std::uint8_t> bytes) {
  const auto size = static_cast<ssize_t>(bytes.size());
  const bool held = ::ftruncate(descriptor_, 0) == 0 &&
                    ::pwrite(descriptor_, bytes.data(), bytes.size(), 0) == size;
  Require(held, "a file in memory takes its bytes");
}

void RequireSame(const DICOMObject& a, const DICOMObject& b) {
  RequireSameElements(a, b, SameBytes);
}

void RequireSameBesides(const DICOMObject& whole, const DICOMObject& stepped,
                        std::uint32_t longest) {
  RequireSameElements(whole, stepped, [longest](const VR& one, const VR& other) {
    return SameBytesBesides(one, other, longest);
  });
}

void RequireSame(std::span<const ParseOddity> a, std::span<const ParseOddity> b) {
  Require(std::ranges::equal(a, b), "equal oddities");
}

void RequireSame(const ParseStop& a, const ParseStop& b) {
  Require(a.why == b.why, "equal reasons to stop");
  Require(a.position == b.position, "equal places to stop at");
  Require(a.group == b.group && a.element == b.element, "equal elements to stop at");
}

void RequireWithin(const DICOMObject& object, std::size_t inputSize) {
  Require(BytesIn(object) <= inputSize, "no more value bytes than the input has");
}

}  // namespace tessaret::fuzz
