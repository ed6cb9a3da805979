// The C interface as a host would use it that knows nothing: any member of any object by number and by name, with any values in any
// number. Nothing may crash, and once everything is given back no object is left.
#include <stdlib.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "support.h"
#include "tessaret/tessaret.h"

namespace {

using tessaret::fuzz::MemoryFile;
using tessaret::fuzz::Require;

constexpr const char* kClasses[] = {"Tessaret.DCMObject", "Tessaret.DcmDictionary",
                                    "Tessaret.DCMOptions", "Tessaret.ImageModule"};
/// So many of them, from the first, can be made.
constexpr std::size_t kComplete = 3;

/// What classes have besides their main interface, which the last one leads back to.
constexpr const char* kInterfaces[] = {"IDcmFile", "IDcmDictionaryFile", "IDispatch"};
/// These steps ask for one of them. Hardly any seed from before has such a step.
constexpr std::uint8_t kFirstQuery = 0xA8;
constexpr std::uint8_t kLastQuery = 0xAF;

/// Members whose first argument names a file, which is then one of the run; and those that write it.
constexpr std::string_view kOfFiles[] = {"Load", "Save", "LoadFile", "SaveFile"};
constexpr std::string_view kWriters[] = {"Save", "SaveFile"};
/// Members that are left alone: a data set that nobody takes would stay for ever, by what the caller asked for; and descriptors are
/// the fuzzer's own.
constexpr std::string_view kApart[] = {"GetOwnership", "LoadDescriptor"};

template <std::size_t kCount>
bool IsOneOf(const std::string_view (&names)[kCount], std::string_view name) {
  return std::ranges::any_of(names, [&](std::string_view each) {
    return each.size() == name.size() && ::strncasecmp(each.data(), name.data(), name.size()) == 0;
  });
}

/// A folder for the settings and files of a run, gone with it.
class Folder {
 public:
  Folder() {
    Require(::mkdtemp(path_) != nullptr, "a folder can be made");
    ::setenv("XDG_CONFIG_HOME", path_, 1);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  [[nodiscard]] std::string SavedFile() const { return std::string(path_) + "/saved.dcm"; }

 private:
  char path_[24] = "/tmp/fuzz-c-XXXXXX";
};

/// Takes an input apart from its front; an input that is used up gives zeros.
class Script {
 public:
  explicit Script(std::span<const std::uint8_t> bytes) : rest_(bytes) {}
  [[nodiscard]] bool HasMore() const { return !rest_.empty(); }
  std::uint8_t Byte() {
    if (rest_.empty()) return 0;
    const std::uint8_t byte = rest_.front();
    rest_ = rest_.subspan(1);
    return byte;
  }
  template <class T>
  T Number() {
    std::array<std::uint8_t, sizeof(T)> bytes{};
    for (std::uint8_t& byte : bytes) byte = Byte();
    T number;
    std::memcpy(&number, bytes.data(), sizeof(number));
    return number;
  }
  std::string_view Text() {
    const std::size_t wanted = Byte() % 32;
    const std::size_t length = std::min(wanted, rest_.size());
    const std::string_view text(reinterpret_cast<const char*>(rest_.data()), length);
    rest_ = rest_.subspan(length);
    return text;
  }
  std::span<const std::uint8_t> Rest() const { return rest_; }

 private:
  std::span<const std::uint8_t> rest_;
};

/// The arguments of a call with what they point to.
struct Arguments {
  Arguments() = default;
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;

  std::vector<tessaret_value> values;
  std::vector<std::string> texts;
  std::array<tessaret_bound, 2> bounds{};
  std::array<std::uint64_t, 8> entries{};
  tessaret_array array{};
};

class Host {
 public:
  Host(Script& script, const char* file, std::string saved)
      : script_(script), file_(file), saved_(std::move(saved)) {}
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  ~Host() {
    for (tessaret_object* object : objects_) tessaret_release(object);
  }

  void Step() {
    const std::uint8_t step = script_.Byte();
    if (step >= kFirstQuery && step <= kLastQuery) return Query();
    switch (step % 8) {
      case 0:
        Create();
        break;
      case 1:
        Release();
        break;
      case 2:
        Advise();
        break;
      case 3:
        CallByName();
        break;
      default:
        CallByNumber();
    }
  }

 private:
  static void OnEvent(void*, std::int32_t, const tessaret_value*, std::uint32_t) {}

  std::size_t Slot() { return script_.Byte() % objects_.size(); }

  void Keep(tessaret_object* object) {
    tessaret_object*& place = objects_[Slot()];
    tessaret_release(place);
    place = object;
  }

  void Create() {
    const std::size_t chosen = script_.Byte() % std::size(kClasses);
    tessaret_object* made = nullptr;
    tessaret_create(kClasses[chosen], &made);
    // Without its dictionaries the library makes nothing, and nothing would be tried.
    Require((made != nullptr) == (chosen < kComplete), "classes that are complete can be made");
    if (made != nullptr) Keep(made);
  }

  void Release() {
    const std::size_t slot = Slot();
    tessaret_release(objects_[slot]);
    objects_[slot] = nullptr;
  }

  void Query() {
    tessaret_object* const object = objects_[Slot()];
    tessaret_object* other = nullptr;
    tessaret_query(object, kInterfaces[script_.Byte() % std::size(kInterfaces)], &other);
    if (other != nullptr) Keep(other);
  }

  void Advise() {
    tessaret_object* const object = objects_[Slot()];
    std::uint32_t cookie = 0;
    tessaret_advise(object, &OnEvent, nullptr, &cookie);
    tessaret_unadvise(object, (script_.Byte() & 1) != 0 ? cookie : script_.Byte());
    tessaret_describe_events(object);
  }

  void CallByName() {
    const std::string name(script_.Text());
    // Not into any file of the machine.
    if (IsOneOf(kWriters, name.c_str()) || IsOneOf(kApart, name.c_str())) return;
    Arguments arguments;
    Make(arguments, false);
    tessaret_value result{};
    tessaret_invoke(objects_[Slot()], name.c_str(), script_.Byte() % 10, arguments.values.data(),
                    static_cast<std::uint32_t>(arguments.values.size()), &result);
    TakeBack(arguments, result);
  }

  void CallByNumber() {
    tessaret_object* const object = objects_[Slot()];
    const tessaret_interface_info* const info = tessaret_describe(object);
    if (info == nullptr) return;
    const std::uint32_t member = script_.Byte() % (info->member_count + 1);
    const std::string_view name = member < info->member_count ? info->members[member].name : "";
    if (IsOneOf(kApart, name)) return;
    Arguments arguments;
    Make(arguments, IsOneOf(kOfFiles, name));
    tessaret_value result{};
    tessaret_call(object, static_cast<std::int32_t>(member), arguments.values.data(),
                  static_cast<std::uint32_t>(arguments.values.size()), &result);
    TakeBack(arguments, result);
  }

  void Make(Arguments& arguments, bool namesFile) {
    const std::size_t count = script_.Byte() % 7;
    arguments.texts.reserve(count);
    for (std::size_t at = 0; at < count; ++at) {
      tessaret_value value{};
      Fill(value, arguments);
      if (namesFile && at == 0) NameFile(value);
      arguments.values.push_back(value);
    }
  }

  /// Files are read where the input lies, and written into the folder.
  void NameFile(tessaret_value& value) {
    value = tessaret_value{};
    value.type = TESSARET_STRING;
    value.as.string_value = (script_.Byte() & 1) != 0 ? file_ : saved_.c_str();
  }

  void Fill(tessaret_value& value, Arguments& arguments) {
    value.type = script_.Byte() % 20;
    switch (value.type) {
      case TESSARET_STRING:
        arguments.texts.emplace_back(script_.Text());
        value.as.string_value = arguments.texts.back().c_str();
        value.length = static_cast<std::uint32_t>(arguments.texts.back().size());
        break;
      case TESSARET_OBJECT:
        value.as.object_value = objects_[Slot()];
        break;
      case 19:
        FillArray(value, arguments);
        break;
      case TESSARET_LONG:
        // Tags that are often there, besides any number.
        value.as.long_value = (script_.Byte() & 1) != 0 ? script_.Number<std::uint16_t>()
                                                        : script_.Number<std::int32_t>();
        break;
      case 18:
        value.type = script_.Number<std::uint16_t>() & 0xFF;
        if (value.type == TESSARET_STRING) value.type = 0;
        if (value.type == TESSARET_OBJECT) {
          // Any address: what is no object has to be refused.
          const auto address = script_.Number<std::uint64_t>();
          std::memcpy(&value.as.object_value, &address, sizeof(address));
        }
        break;
      default:
        value.as.double_value = script_.Number<double>();
    }
  }

  void FillArray(tessaret_value& value, Arguments& arguments) {
    value.type = static_cast<std::uint16_t>(TESSARET_ARRAY | script_.Byte() % 20);
    arguments.array.dimensions = script_.Byte() % 3;
    arguments.array.count = arguments.array.dimensions == 0 ? 0 : 1;
    for (std::uint32_t at = 0; at < arguments.array.dimensions; ++at) {
      arguments.bounds[at] = {script_.Number<std::int16_t>(), script_.Byte() % 3u};
      arguments.array.count *= arguments.bounds[at].count;
    }
    for (std::uint64_t& entry : arguments.entries) entry = script_.Byte() * 0x0101010101010101u;
    if (script_.Byte() % 16 == 0) arguments.array.count += script_.Byte();
    arguments.array.bounds = arguments.bounds.data();
    arguments.array.entries = arguments.entries.data();
    value.as.array_value = &arguments.array;
  }

  /// Objects that were given are kept for later calls, everything else goes.
  void TakeBack(Arguments& arguments, tessaret_value& result) {
    if (result.type == TESSARET_OBJECT && result.as.object_value != nullptr) {
      tessaret_retain(result.as.object_value);
      Keep(result.as.object_value);
    }
    tessaret_clear(&result);
    for (tessaret_value& value : arguments.values) tessaret_clear(&value);
  }

  Script& script_;
  const char* file_;
  std::string saved_;
  std::array<tessaret_object*, 4> objects_{};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryFile file;
  static const Folder folder;
  // The end of the input is a file as well.
  const std::span<const std::uint8_t> input(data, size);
  file.Hold(input.last(size / 2));
  Script script(input);
  {
    Host host(script, file.Path(), folder.SavedFile());
    while (script.HasMore()) host.Step();
  }
  Require(tessaret_can_unload() == 1, "every object is given back");
  Require(tessaret_last_error_text() != nullptr, "there is always a text");
  return 0;
}
