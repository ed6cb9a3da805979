#include "source_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "base/text.h"
#include "class_object.h"
#include "file_walk.h"
#include "platform/file_calls.h"
#include "tag_text.h"

namespace tessaret::tool {
namespace {

/// Why the length of the meta header is wrong, or empty. The reader goes by it as far as that makes sense, and leaves elements
/// out where it does not.
std::string WhyMetaLengthIsOdd(IDcmFile& file) {
  double stated = 0;
  double counted = 0;
  VariantBool found;
  Require(file.GetMetaLength(&stated, &counted, &found));
  if (!found.IsTrue() || stated == counted) return {};
  return Format("(0002,0000) says that %.0f bytes of meta header follow, where there are %.0f",
                stated, counted);
}

std::string NamedUid(const std::string& uid, Host& host) {
  const auto known = host.FindUid(uid);
  return known ? uid + " (" + known->name + ')' : '"' + uid + '"';
}

std::string WordsOf(const ReadingEnd& end, const SourceFile& source, Host& host) {
  const std::string at = Format(" at offset %llu", static_cast<unsigned long long>(end.offset));
  const std::string tag = TagText(end.tag);
  switch (end.why) {
    case READ_TO_THE_END:
    case READ_TO_PIXELS:
      return {};
    case READ_CUT_ELEMENT:
      return "truncated" + at + (end.tag == 0 ? "" : ", in " + tag);
    case READ_NO_DELIMITER:
      return "truncated" + at + ", before a delimiter";
    case READ_STRAY_TAG:
      return "stray " + tag + at;
    case READ_UNKNOWN_SYNTAX:
      return "transfer syntax " + NamedUid(source.syntax, host) + " cannot be read here";
    case READ_ORPHAN_ITEM:
      return "item without a sequence" + at;
    case READ_TOO_DEEP:
      return Format("sequences nested deeper than %d levels", kMaxNesting) + at;
    case READ_TOO_LONG:
      return "length of " + tag + at + " goes beyond the end";
  }
  return {};
}

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
bool IsKnown(TagKey tag, Host& host) { return ElementOf(tag) == 0 || host.Knows(tag); }

TagKey InOtherOrder(TagKey tag) {
  return MakeTagKey(__builtin_bswap16(GroupOf(tag)), __builtin_bswap16(ElementOf(tag)));
}

std::optional<TagKey> FirstTagOf(IDcmFile& file) {
  std::int32_t group = 0;
  std::int32_t element = 0;
  VariantBool found;
  Require(file.GetFirstTag(&group, &element, &found));
  if (!found.IsTrue()) return std::nullopt;
  return MakeTagKey(static_cast<std::uint16_t>(group), static_cast<std::uint16_t>(element));
}

/// Zeros make the tag (0000,0000), again and again, and nothing else.
bool HoldsMoreThanZeros(const Listing& listing) {
  if (listing.Rows() == 0) return false;
  const Element first = listing.At(0);
  return first.tag != 0 || first.length != 0;
}

bool HoldsGroupsAbove(const Listing& listing, std::uint16_t group) {
  bool holds = false;
  listing.ForEachOnTop([&](const Element& each) { holds = holds || GroupOf(each.tag) > group; });
  return holds;
}

/// Where the first reading of standard input ended says nothing: it may have stopped early.
bool inputIsTaken = false;

class Loader {
 public:
  Loader(const std::string& path, const SourceOptions& options, Host& host)
      : path_(path), options_(options), host_(host) {}

  SourceFile Load() {
    struct stat status {};
    host_.Dictionary();
    source_.failure = WhyNotToOpen(path_, status);
    if (source_.failure.empty() && path_ == kStandardInput && std::exchange(inputIsTaken, true))
      source_.failure = "was read already";
    if (!source_.failure.empty()) return std::move(source_);
    // A pipe that has been read cannot be read again, and to open it anew may wait for ever.
    const bool readableAgain = S_ISREG(status.st_mode);
    if (readableAgain) MeasureFile(static_cast<std::uint64_t>(status.st_size));
    file_ = FileOf(*(object_ = NewObject()));
    Read(ENCODING_NONE);
    source_.syntax = AnswerOf(*file_, &IDcmFile::get_NamedSyntax).Narrow();
    source_.hasMark = AnswerOf(*file_, &IDcmFile::get_HasMark).IsTrue();
    Take();
    if (!source_.object) return std::move(source_);
    const std::string otherForm = WhyFormIsAnother();
    const std::string oddLength = WhyMetaLengthIsOdd(*file_);
    const auto firstTag = FirstTagOf(*file_);
    if (!source_.hasMark && !IsDataSet(firstTag)) {
      if (!readableAgain || !IsBigEndianDataSet(firstTag)) return NotDicom();
      Read(ENCODING_EXPLICIT_BIG);
      Take();
      if (!source_.object) return std::move(source_);
    }
    if (!oddLength.empty()) source_.warnings.push_back(oddLength);
    Judge();
    if (!otherForm.empty()) source_.failure = otherForm;
    return std::move(source_);
  }

 private:
  /// Why the data set was not read as its meta header says, or empty. The reader passes a syntax over where the length of the
  /// meta header is missing or too small, and starts anew with the form of the meta header behind a stray delimiter.
  [[nodiscard]] std::string WhyFormIsAnother() const {
    const _EnumDataEncoding named = AnswerOf(*file_, &IDcmFile::get_NamedEncoding);
    const bool holdsDataSet = HoldsGroupsAbove(source_.listing, kMetaGroup);
    if (named == ENCODING_NONE || named == source_.encoding || !holdsDataSet) return {};
    return "the transfer syntax " + NamedUid(source_.syntax, host_) +
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

  /// Loads what is there, a bare data set where an encoding is given. In a meantime it may have become unreadable.
  void Read(_EnumDataEncoding encoding) {
    const std::int32_t pixels = !options_.loadPixels  ? 0
                                : options_.skipPixels ? LOAD_SKIPS_PIXELS
                                                      : LOAD_PIXELS;
    const std::int32_t how =
        pixels | (options_.strict && encoding == ENCODING_NONE ? LOAD_STRICT : 0);
    if (path_ != kStandardInput) {
      Keep(file_->LoadFile(path_, how, encoding));
      return;
    }
    // The descriptor may stand for a socket, or for a file that nobody could open anew.
    const int error = inputStart_ ? SeekFile(STDIN_FILENO, *inputStart_).error : 0;
    if (error == 0) {
      Keep(file_->LoadDescriptor(STDIN_FILENO, how, encoding));
    } else {
      isRead_ = false;
      why_ = SystemErrorText(error);
    }
  }

  void Keep(Status status) {
    isRead_ = !Failed(status);
    // The next file may be smaller.
    why_ = status == kOutOfMemory ? "not enough memory" : isRead_ ? "" : LastError().text;
  }

  /// Notes how a reading ended.
  void Take() {
    source_.object = isRead_ ? object_ : Ref<IDCMObject>();
    source_.reading = ReadingOf(*file_);
    source_.encoding = AnswerOf(*file_, &IDcmFile::get_ReadEncoding);
    const double read = AnswerOf(*file_, &IDcmFile::get_BytesRead);
    source_.bytes = std::max(source_.bytes, static_cast<std::uint64_t>(read));
    // What a failing system cut short looks truncated too.
    source_.failure = AnswerOf(*file_, &IDcmFile::get_SystemError).Utf8();
    if (source_.failure.empty()) source_.failure = WordsOf(source_.reading.end, source_, host_);
    if (!isRead_ && source_.failure.empty()) source_.failure = why_;
    if (source_.object) source_.listing = Listing(*source_.object);
  }

  [[nodiscard]] bool IsDataSet(std::optional<TagKey> firstTag) const {
    return firstTag && IsKnown(*firstTag, host_) && HoldsMoreThanZeros(source_.listing);
  }

  [[nodiscard]] bool IsBigEndianDataSet(std::optional<TagKey> firstTag) const {
    return firstTag && IsKnown(InOtherOrder(*firstTag), host_) && *firstTag != 0;
  }

  SourceFile NotDicom() {
    source_.object = nullptr;
    source_.failure = "not DICOM";
    return std::move(source_);
  }

  void Judge() {
    if (!source_.hasMark)
      source_.warnings.emplace_back("no \"DICM\" mark, so the encoding is a guess");
    // What is read wrongly may look like any other fault further on.
    source_.reading.isExplicit = !source_.IsImplicit();
    const std::string doubt = WhyToDoubt(source_.listing, source_.object, source_.reading, host_);
    if (!doubt.empty()) source_.failure = doubt;
    for (std::string& warning : Warnings(source_.reading))
      source_.warnings.push_back(std::move(warning));
  }

  std::string path_;
  std::optional<std::uint64_t> inputStart_;  // of standard input that is a regular file
  const SourceOptions& options_;
  Host& host_;
  Ref<IDCMObject> object_;
  Ref<IDcmFile> file_;  // of that
  bool isRead_ = false;
  std::string why_;  // it is not
  SourceFile source_;
};

}  // namespace

std::string DescribeEncoding(const SourceFile& source, Host& host) {
  std::string words = Format("%llu bytes, ", static_cast<unsigned long long>(source.bytes));
  words += source.hasMark ? "preamble and mark, " : "no mark, ";
  words += source.syntax.empty() ? "no transfer syntax named, "
                                 : "transfer syntax " + NamedUid(source.syntax, host) + ", ";
  words += source.IsImplicit() ? "implicit" : "explicit";
  return words + (source.IsBigEndian() ? " big endian" : " little endian");
}

std::string SubjectOf(const std::string& path) {
  return path == kStandardInput ? "standard input" : path;
}

SourceFile LoadSource(const std::string& path, const SourceOptions& options, Host& host) {
  return Loader(path, options, host).Load();
}

}  // namespace tessaret::tool
