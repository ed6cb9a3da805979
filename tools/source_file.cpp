#include "source_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "base/bounded_reader.h"
#include "base/text.h"
#include "core/element_reader.h"
#include "core/file_buffer.h"
#include "core/module_dictionaries.h"
#include "core/value_order.h"
#include "file_walk.h"
#include "platform/file_calls.h"
#include "tag_text.h"

namespace tessaret::tool {
namespace {

constexpr std::uint16_t kMetaGroup = 0x0002;
constexpr std::uint16_t kSyntaxElement = 0x0010;

/// What stands at the head of a file.
struct Head {
  std::optional<TagKey> firstTag;
  std::string syntax;
  std::optional<std::uint32_t> claimed;  // bytes of meta header behind (0002,0000) as it says
  std::optional<std::uint64_t> counted;  // as they are, when the end of the group was seen
  bool isCut = false;                    // the bytes ended before the group did
};

/// The length of the element at `bytes` behind its tag; nothing when the bytes end.
std::optional<std::uint32_t> ReadLength(BoundedReader& bytes, bool isExplicit) {
  if (!isExplicit) return bytes.Little32();
  const auto first = bytes.U8();
  const auto second = bytes.U8();
  const auto half = bytes.Little16();
  if (!first || !second || !half) return std::nullopt;
  const auto type = static_cast<VrCode>(*first << 8 | *second);
  return HasLongForm(type) ? bytes.Little32() : std::optional<std::uint32_t>(*half);
}

/// Looks through the meta header. The reader goes by its transfer syntax too, but does not always keep it.
Head ReadHead(BoundedReader bytes, std::int32_t code) {
  Head head;
  std::uint64_t leftBehindLength = 0;
  for (;;) {
    const std::uint64_t left = bytes.Left();
    const auto group = bytes.Little16();
    const auto element = bytes.Little16();
    head.isCut = !group || !element;
    if (head.isCut) return head;
    if (!head.firstTag) head.firstTag = MakeTagKey(*group, *element);
    if (*group != kMetaGroup) {
      if (head.claimed) head.counted = leftBehindLength - left;
      return head;
    }
    const auto length = ReadLength(bytes, !IsImplicit(code));
    auto value = length ? bytes.Sub(*length) : std::nullopt;
    head.isCut = !value;
    if (head.isCut) return head;
    if (*element == 0 && value->Left() == sizeof(std::uint32_t)) {
      head.claimed = value->Little32();
      leftBehindLength = bytes.Left();
    }
    if (*element != kSyntaxElement || value->Left() == 0) continue;
    const std::string_view text(reinterpret_cast<const char*>(value->Here()), value->Left());
    head.syntax = Trimmed(text.substr(0, text.find('\0')));
  }
}

/// Brings more into the window, where the reader finds it in its turn. False when nothing more comes or goes in.
bool LookFurther(FileStream& stream) {
  const std::size_t before = stream.WindowSize();
  stream.Refill(std::min(2 * before, FileStream::kLargestWindow));
  return stream.WindowSize() > before;
}

/// Notes what the reader is about to see, since an object does not say how it was encoded.
class ObservingCoder final : public DataSetCoder {
 public:
  using DataSetCoder::DataSetCoder;

  bool File_ParseRawVRIntoDCM(Buffer& buffer, DICOMObject& object, std::int32_t firstCode,
                              bool loadPixels) override {
    if (!observed_) Observe(buffer, firstCode);
    observed_ = true;
    return DataSetCoder::File_ParseRawVRIntoDCM(buffer, object, firstCode, loadPixels);
  }

  Head head;
  std::uint32_t start = 0;  // where the first element stands

 private:
  void Observe(Buffer& buffer, std::int32_t firstCode) {
    start = buffer.Position;
    const auto* file = dynamic_cast<FileBuffer*>(&buffer);
    FileStream* stream = file == nullptr ? nullptr : file->Stream.get();
    if (stream == nullptr) return;
    // A pipe gives what its writer wrote so far, and a meta header may be longer than what is read at once.
    do {
      head = ReadHead({stream->Window(), stream->WindowSize()}, firstCode);
    } while (head.isCut && LookFurther(*stream));
  }

  bool observed_ = false;
};

/// Why the length of the meta header is wrong, or empty. The reader goes by it as far as that makes sense, and leaves elements
/// out where it does not.
std::string WhyMetaLengthIsOdd(const Head& head) {
  if (!head.counted || *head.counted == *head.claimed) return {};
  return Format("(0002,0000) says that %u bytes of meta header follow, where there are %llu",
                *head.claimed, static_cast<unsigned long long>(*head.counted));
}

std::string At(const ParseStop& stop) {
  return Format(" at offset %llu", static_cast<unsigned long long>(stop.position));
}

std::string NamedUid(const std::string& uid) {
  const UIDEntry* entry = ModuleUidDictionary().FindEntry(uid);
  return entry == nullptr ? '"' + uid + '"' : uid + " (" + entry->Description + ')';
}

std::string WordsOf(const ParseStop& stop, const SourceFile& source) {
  const std::string tag = TagText(stop.group, stop.element);
  switch (stop.why) {
    case ParseStop::Why::kNone:
    case ParseStop::Why::kPixelData:
      return {};
    case ParseStop::Why::kTruncated:
      return "truncated" + At(stop) +
             (MakeTagKey(stop.group, stop.element) == 0 ? "" : ", in " + tag);
    case ParseStop::Why::kMissingEnd:
      return "truncated" + At(stop) + ", before a delimiter";
    case ParseStop::Why::kStrayTag:
      return "stray " + tag + At(stop);
    case ParseStop::Why::kUnknownSyntax:
      return "transfer syntax " + NamedUid(source.syntax) + " cannot be read here";
    case ParseStop::Why::kOrphanItem:
      return "item without a sequence" + At(stop);
    case ParseStop::Why::kTooDeep:
      return Format("sequences nested deeper than %d levels", kMaxNesting) + At(stop);
    case ParseStop::Why::kTooLong:
      return "length of " + tag + At(stop) + " goes beyond the end";
  }
  return {};
}

/// The descriptor that the tool was given. It may stand for a socket, or for a file that nobody could open anew.
class StandardInput final : public FileBuffer {
 public:
  /// `start`: where it began, when it can go back there.
  explicit StandardInput(std::optional<std::uint64_t> start) : start_(start) {}

  bool OpenForRead(const char*) override {
    int error = start_ ? SeekFile(STDIN_FILENO, *start_).error : 0;
    auto stream = error != 0 ? nullptr : FileStream::FromDescriptor(STDIN_FILENO, error);
    return TakeForRead(std::move(stream), error);
  }

 protected:
  [[nodiscard]] bool ReadsPlainly() const override { return true; }

 private:
  std::optional<std::uint64_t> start_;
};

/// Why a path is not to be opened at all, or empty with its `status`.
std::string WhyNotToOpen(const std::string& path, struct stat& status) {
  const FileResult found = path == kStandardInput ? StatDescriptor(STDIN_FILENO, status)
                                                  : StatPath(path.c_str(), status);
  if (!found.Ok()) return SystemErrorText(found.error);
  if (S_ISDIR(status.st_mode)) return SystemErrorText(EISDIR);
  // A device may never come to an end.
  return S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode) ? "is a device" : std::string();
}

/// Without the mark any bytes could be there. They are taken for a data set when they begin with a known tag.
bool IsKnown(TagKey tag, const RTC& dictionary) {
  return ElementOf(tag) == 0 || dictionary.Find(tag) != nullptr;
}

TagKey InOtherOrder(TagKey tag) {
  return MakeTagKey(__builtin_bswap16(GroupOf(tag)), __builtin_bswap16(ElementOf(tag)));
}

/// Zeros make the tag (0000,0000), again and again, and nothing else.
bool HoldsMoreThanZeros(const DICOMObject& object) {
  const VR* first = object.GetFirstVR();
  return first != nullptr && (first->Key() != 0 || first->Length != 0);
}

bool HoldsGroupsAbove(const DICOMObject& object, std::uint16_t group) {
  bool holds = false;
  object.Elements.ForEach([&](const VR& vr) { holds = holds || vr.Group > group; });
  return holds;
}

/// Where the first reading of standard input ended says nothing: it may have stopped early.
bool inputIsTaken = false;

class Loader {
 public:
  Loader(const std::string& path, const SourceOptions& options, const RTC& dictionary)
      : path_(path), options_(options), dictionary_(dictionary) {}

  SourceFile Load() {
    struct stat status {};
    source_.failure = WhyNotToOpen(path_, status);
    if (source_.failure.empty() && path_ == kStandardInput && std::exchange(inputIsTaken, true))
      source_.failure = "was read already";
    if (!source_.failure.empty()) return std::move(source_);
    // A pipe that has been read cannot be read again, and to open it anew may wait for ever.
    const bool readableAgain = S_ISREG(status.st_mode);
    if (readableAgain) MeasureFile(static_cast<std::uint64_t>(status.st_size));
    ObservingCoder coder(&dictionary_);
    const std::unique_ptr<FileBuffer> buffer = NewBuffer();
    source_.object =
        coder.LoadFile(path_.c_str(), options_.loadPixels, options_.strict, buffer.get());
    source_.syntax = coder.head.syntax;
    source_.hasMark = coder.start != 0;
    source_.code = coder.LastCode();
    Take(coder, *buffer);
    if (source_.object == nullptr) return std::move(source_);
    const std::string otherForm = WhyFormIsAnother();
    if (!source_.hasMark && !IsDataSet(coder.head)) {
      if (!readableAgain || !IsBigEndianDataSet(coder.head)) return NotDicom();
      LoadBigEndian();
      if (source_.object == nullptr) return std::move(source_);
    }
    if (std::string odd = WhyMetaLengthIsOdd(coder.head); !odd.empty())
      source_.warnings.push_back(std::move(odd));
    Judge();
    if (!otherForm.empty()) source_.failure = otherForm;
    return std::move(source_);
  }

 private:
  /// Why the data set was not read as its meta header says, or empty. The reader passes a syntax over where the length of the
  /// meta header is missing or too small, and starts anew with the form of the meta header behind a stray delimiter.
  [[nodiscard]] std::string WhyFormIsAnother() const {
    const auto named = FindTransferSyntax(source_.syntax);
    const bool holdsDataSet = HoldsGroupsAbove(*source_.object, kMetaGroup);
    if (!named || *named == source_.code || !holdsDataSet) return {};
    return "the transfer syntax " + NamedUid(source_.syntax) +
           " was not taken up; what was read is not to be trusted";
  }

  /// Notes the size of a regular file. Standard input begins where the tool was given it.
  void MeasureFile(std::uint64_t size) {
    if (path_ == kStandardInput) {
      inputStart_ =
          static_cast<std::uint64_t>(std::max<std::int64_t>(TellFile(STDIN_FILENO).value, 0));
    }
    source_.bytes = size - std::min(size, inputStart_.value_or(0));
  }

  [[nodiscard]] std::unique_ptr<FileBuffer> NewBuffer() const {
    if (path_ == kStandardInput) return std::make_unique<StandardInput>(inputStart_);
    return std::make_unique<FileBuffer>();
  }

  /// Notes how a parse ended.
  void Take(const DataSetCoder& coder, FileBuffer& buffer) {
    source_.reading.stop = coder.LastStop();
    source_.reading.oddities.assign(coder.Oddities().begin(), coder.Oddities().end());
    source_.bigEndian = buffer.InEndian == kBigEndian;
    source_.bytes = std::max<std::uint64_t>(source_.bytes, buffer.Position);
    // What a failing system cut short looks truncated too.
    source_.failure =
        buffer.HasError() ? buffer.ErrorText() : WordsOf(source_.reading.stop, source_);
    if (source_.object != nullptr || !source_.failure.empty()) return;
    source_.failure = coder.ErrorText() == nullptr ? "cannot be read" : coder.ErrorText();
  }

  [[nodiscard]] bool IsDataSet(const Head& head) const {
    return head.firstTag && IsKnown(*head.firstTag, dictionary_) &&
           HoldsMoreThanZeros(*source_.object);
  }

  [[nodiscard]] bool IsBigEndianDataSet(const Head& head) const {
    return head.firstTag && IsKnown(InOtherOrder(*head.firstTag), dictionary_) &&
           *head.firstTag != 0;
  }

  /// A bare data set in big endian, which the library's own loading does not look for.
  void LoadBigEndian() {
    DataSetCoder coder(&dictionary_);
    const std::unique_ptr<FileBuffer> buffer = NewBuffer();
    source_.object = std::make_unique<DICOMDataObject>();
    source_.code = kExplicitBig;
    if (buffer->OpenForRead(path_.c_str())) ReadBigEndian(coder, *buffer);
    if (buffer->HasError()) source_.object.reset();
    Take(coder, *buffer);
  }

  /// A parse ends at a stray delimiter, and the next one goes on behind it.
  void ReadBigEndian(DataSetCoder& coder, FileBuffer& buffer) {
    std::uint32_t before = 0;
    do {
      before = buffer.Position;
    } while (
        coder.File_ParseRawVRIntoDCM(buffer, *source_.object, kExplicitBig, options_.loadPixels) &&
        buffer.Position != before);
  }

  SourceFile NotDicom() {
    source_.object.reset();
    source_.failure = "not DICOM";
    return std::move(source_);
  }

  void Judge() {
    if (!source_.hasMark)
      source_.warnings.emplace_back("no \"DICM\" mark, so the encoding is a guess");
    // What is read wrongly may look like any other fault further on.
    source_.reading.isExplicit = !IsImplicit(source_.code);
    const std::string doubt = WhyToDoubt(*source_.object, source_.reading, dictionary_);
    if (!doubt.empty()) source_.failure = doubt;
    for (std::string& warning : Warnings(source_.reading))
      source_.warnings.push_back(std::move(warning));
    if (source_.bigEndian) SwapNumbers(*source_.object);
  }

  std::string path_;
  std::optional<std::uint64_t> inputStart_;  // of standard input that is a regular file
  const SourceOptions& options_;
  const RTC& dictionary_;
  SourceFile source_;
};

}  // namespace

std::string DescribeEncoding(const SourceFile& source) {
  std::string words = Format("%llu bytes, ", static_cast<unsigned long long>(source.bytes));
  words += source.hasMark ? "preamble and mark, " : "no mark, ";
  words += source.syntax.empty() ? "no transfer syntax named, "
                                 : "transfer syntax " + NamedUid(source.syntax) + ", ";
  words += IsImplicit(source.code) ? "implicit" : "explicit";
  return words + (source.bigEndian ? " big endian" : " little endian");
}

std::string SubjectOf(const std::string& path) {
  return path == kStandardInput ? "standard input" : path;
}

SourceFile LoadSource(const std::string& path, const SourceOptions& options,
                      const RTC& dictionary) {
  return Loader(path, options, dictionary).Load();
}

}  // namespace tessaret::tool
