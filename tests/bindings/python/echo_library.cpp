// A library with an object that gives back what it gets, tells events and fails as it is told: what the Python package is tried on.
// All else of Tessaret is in it too.
#include <memory>
#include <thread>
#include <utility>

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "component/event_source.h"
#include "component/report.h"
#include "component/thread_msg_proxy.h"
#include "facade/c_handles.h"
#include "facade/class_ids.h"

namespace tessaret {
namespace {

class IEcho : public IDispatch {
 public:
  static constexpr InterfaceId kId{7, 1};
  static constexpr const char* kName = "IEcho";

  virtual Status get_Short(Result<std::int16_t> pVal) = 0;
  virtual Status put_Short(std::int16_t newVal) = 0;
  virtual Status get_Long(Result<std::int32_t> pVal) = 0;
  virtual Status put_Long(std::int32_t newVal) = 0;
  virtual Status get_Float(Result<float> pVal) = 0;
  virtual Status put_Float(float newVal) = 0;
  virtual Status get_Double(Result<double> pVal) = 0;
  virtual Status put_Double(double newVal) = 0;
  virtual Status get_When(Result<Date> pVal) = 0;
  virtual Status put_When(Date newVal) = 0;
  virtual Status get_Truth(Result<VariantBool> pVal) = 0;
  virtual Status put_Truth(VariantBool newVal) = 0;
  virtual Status get_Byte(Result<std::uint8_t> pVal) = 0;
  virtual Status put_Byte(std::uint8_t newVal) = 0;
  virtual Status get_Text(Result<String> pVal) = 0;
  virtual Status put_Text(const String& newVal) = 0;
  virtual Status get_Friend(Result<IEcho*> pVal) = 0;
  virtual Status put_Friend(const Variant& newVal) = 0;
  virtual Status putref_Friend(IEcho* newVal) = 0;
  virtual Status get_Cell(std::int32_t Row, Optional<const Variant&> Column,
                          Optional<std::int32_t> Layer, Result<String> pVal) = 0;
  virtual Status put_Cell(std::int32_t Row, Optional<const Variant&> Column,
                          Optional<std::int32_t> Layer, const Variant& newVal) = 0;
  virtual Status get_Lonely(std::int32_t Index, Result<std::int32_t> pVal) = 0;
  virtual Status put_Deaf(std::int32_t Index, std::int32_t newVal) = 0;
  virtual Status get_Voxel(Result<std::int32_t> pVal) = 0;
  virtual Status put_Voxel(std::int32_t newVal) = 0;
  virtual Status Echo(const Variant& value, Result<Variant> pVal) = 0;
  virtual Status TypeOf(const Variant& value, Result<std::int32_t> tag) = 0;
  virtual Status SignedByte(std::int32_t number, Result<Variant> pVal) = 0;
  virtual Status IsNull(const String& text, Result<VariantBool> pVal) = 0;
  virtual Status Mix(InOut<std::int32_t> a, std::int16_t b, Out<String> c, Out<Variant> d,
                     Optional<double> e, Result<double> sum) = 0;
  virtual Status LeaveAlone(VariantBool write, Out<std::int32_t> number, Out<String> text,
                            Out<Variant> any) = 0;
  virtual Status Outs(Out<std::int32_t> first, std::int32_t given, Out<VariantBool> second) = 0;
  virtual Status Keywords(std::int32_t from, std::int32_t self, std::int32_t lambda,
                          Result<std::int32_t> sum) = 0;
  virtual Status Do(VariantBool itself) = 0;
  virtual Status Fail(std::int32_t status, const String& words) = 0;
  virtual Status Itself(Result<IEcho*> pVal) = 0;
  virtual Status Another(Result<IEcho*> pVal) = 0;
  virtual Status Tell(std::int32_t number, const Variant& value) = 0;
  virtual Status TellFromThread(std::int32_t number, const Variant& value) = 0;
  virtual Status TellWhenPumped(std::int32_t number, const Variant& value) = 0;
};

class IEchoEvents : public IObject {
 public:
  static constexpr InterfaceId kId{7, 2};
  static constexpr const char* kName = "_IEchoEvents";

  virtual Status OnNothing() = 0;
  virtual Status OnTold(std::int32_t number, const Variant& value, IEcho* source) = 0;
};

using Flow = ArgumentFlow;

constexpr std::array<ArgumentInfo, 1> kValue = {{{"pVal", Flow::kResult}}};
constexpr std::array<ArgumentInfo, 1> kNewValue = {{{"newVal"}}};
constexpr std::array<ArgumentInfo, 2> kValueOfValue = {{{"value"}, {"pVal", Flow::kResult}}};

template <auto kMember>
constexpr auto kGives = Signature<decltype(kMember)>::Describe(kValue);
template <auto kMember>
constexpr auto kTakes = Signature<decltype(kMember)>::Describe(kNewValue);
template <auto kMember>
constexpr auto kTurns = Signature<decltype(kMember)>::Describe(kValueOfValue);

constexpr auto kGetCell = Signature<decltype(&IEcho::get_Cell)>::Describe(
    {{{"Row"}, {"Column", Flow::kOptional}, {"Layer", Flow::kOptional}, {"pVal", Flow::kResult}}});
constexpr auto kPutCell = Signature<decltype(&IEcho::put_Cell)>::Describe(
    {{{"Row"}, {"Column", Flow::kOptional}, {"Layer", Flow::kOptional}, {"newVal"}}});
constexpr auto kGetLonely =
    Signature<decltype(&IEcho::get_Lonely)>::Describe({{{"Index"}, {"pVal", Flow::kResult}}});
constexpr auto kPutDeaf =
    Signature<decltype(&IEcho::put_Deaf)>::Describe({{{"Index"}, {"newVal"}}});
constexpr auto kGetVoxel = Signature<decltype(&IEcho::get_Voxel)>::Describe(
    {{{"pVal", Flow::kResult, 0, "_EnumVoxelType"}}});
constexpr auto kPutVoxel = Signature<decltype(&IEcho::put_Voxel)>::Describe(
    {{{"newVal", Flow::kIn, 0, "_EnumVoxelType"}}});
constexpr auto kMix = Signature<decltype(&IEcho::Mix)>::Describe({{{"a", Flow::kInOut},
                                                                   {"b"},
                                                                   {"c", Flow::kOut},
                                                                   {"d", Flow::kOut},
                                                                   {"e", Flow::kOptional},
                                                                   {"sum", Flow::kResult}}});
constexpr auto kLeaveAlone = Signature<decltype(&IEcho::LeaveAlone)>::Describe(
    {{{"write"}, {"number", Flow::kOut}, {"text", Flow::kOut}, {"any", Flow::kOut}}});
constexpr auto kOuts = Signature<decltype(&IEcho::Outs)>::Describe(
    {{{"first", Flow::kOut}, {"given"}, {"second", Flow::kOut}}});
constexpr auto kKeywords = Signature<decltype(&IEcho::Keywords)>::Describe(
    {{{"from"}, {"self"}, {"lambda"}, {"sum", Flow::kResult}}});
constexpr auto kDo = Signature<decltype(&IEcho::Do)>::Describe({{{"itself"}}});
constexpr auto kFail = Signature<decltype(&IEcho::Fail)>::Describe({{{"status"}, {"words"}}});
constexpr auto kTell = Signature<decltype(&IEcho::Tell)>::Describe({{{"number"}, {"value"}}});
constexpr auto kOnTold =
    Signature<decltype(&IEchoEvents::OnTold)>::Describe({{{"number"}, {"value"}, {"source"}}});

using Kind = MemberKind;

template <auto kMember>
constexpr MemberInfo Gives(const char* name, const char* help = "") {
  return {name, Kind::kGet, kGives<kMember>.data(), 1, help};
}
template <auto kMember>
constexpr MemberInfo Takes(const char* name, Kind kind = Kind::kPut) {
  return {name, kind, kTakes<kMember>.data(), 1, "Is kept."};
}
template <auto kMember>
constexpr MemberInfo Turns(const char* name) {
  return {name, Kind::kMethod, kTurns<kMember>.data(), 2, "Gives back."};
}
template <std::size_t kCount>
constexpr MemberInfo Row(const char* name, const std::array<ArgumentInfo, kCount>& arguments,
                         Kind kind = Kind::kMethod, const char* help = "Does what it says.") {
  return {name, kind, arguments.data(), kCount, help};
}

constexpr MemberInfo kMembers[] = {
    Gives<&IEcho::get_Short>("Short", "A short."),
    Takes<&IEcho::put_Short>("Short"),
    Gives<&IEcho::get_Long>("Long"),
    Takes<&IEcho::put_Long>("Long"),
    Gives<&IEcho::get_Float>("Float"),
    Takes<&IEcho::put_Float>("Float"),
    Gives<&IEcho::get_Double>("Double"),
    Takes<&IEcho::put_Double>("Double"),
    Gives<&IEcho::get_When>("When"),
    Takes<&IEcho::put_When>("When"),
    Gives<&IEcho::get_Truth>("Truth"),
    Takes<&IEcho::put_Truth>("Truth"),
    Gives<&IEcho::get_Byte>("Byte"),
    Takes<&IEcho::put_Byte>("Byte"),
    Gives<&IEcho::get_Text>("Text"),
    Takes<&IEcho::put_Text>("Text"),
    Gives<&IEcho::get_Friend>("Friend"),
    Takes<&IEcho::put_Friend>("Friend"),
    Takes<&IEcho::putref_Friend>("Friend", Kind::kPutRef),
    Row("Cell", kGetCell, Kind::kGet, "What is in a cell."),
    Row("Cell", kPutCell, Kind::kPut, "Fills a cell."),
    Row("Lonely", kGetLonely, Kind::kGet),
    Row("Deaf", kPutDeaf, Kind::kPut),
    Row("Voxel", kGetVoxel, Kind::kGet),
    Row("Voxel", kPutVoxel, Kind::kPut),
    Turns<&IEcho::Echo>("Echo"),
    Turns<&IEcho::TypeOf>("TypeOf"),
    Turns<&IEcho::SignedByte>("SignedByte"),
    Turns<&IEcho::IsNull>("IsNull"),
    Row("Mix", kMix),
    Row("LeaveAlone", kLeaveAlone),
    Row("Outs", kOuts),
    Row("Keywords", kKeywords),
    Row("Do", kDo),
    Row("Fail", kFail),
    Row("Itself", kGives<&IEcho::Itself>),
    Row("Another", kGives<&IEcho::Another>),
    Row("Tell", kTell),
    Row("TellFromThread", kTell),
    Row("TellWhenPumped", kTell),
};
constexpr MemberCall kCalls[] = {
    &CallMember<&IEcho::get_Short>,      &CallMember<&IEcho::put_Short>,
    &CallMember<&IEcho::get_Long>,       &CallMember<&IEcho::put_Long>,
    &CallMember<&IEcho::get_Float>,      &CallMember<&IEcho::put_Float>,
    &CallMember<&IEcho::get_Double>,     &CallMember<&IEcho::put_Double>,
    &CallMember<&IEcho::get_When>,       &CallMember<&IEcho::put_When>,
    &CallMember<&IEcho::get_Truth>,      &CallMember<&IEcho::put_Truth>,
    &CallMember<&IEcho::get_Byte>,       &CallMember<&IEcho::put_Byte>,
    &CallMember<&IEcho::get_Text>,       &CallMember<&IEcho::put_Text>,
    &CallMember<&IEcho::get_Friend>,     &CallMember<&IEcho::put_Friend>,
    &CallMember<&IEcho::putref_Friend>,  &CallMember<&IEcho::get_Cell>,
    &CallMember<&IEcho::put_Cell>,       &CallMember<&IEcho::get_Lonely>,
    &CallMember<&IEcho::put_Deaf>,       &CallMember<&IEcho::get_Voxel>,
    &CallMember<&IEcho::put_Voxel>,      &CallMember<&IEcho::Echo>,
    &CallMember<&IEcho::TypeOf>,         &CallMember<&IEcho::SignedByte>,
    &CallMember<&IEcho::IsNull>,         &CallMember<&IEcho::Mix>,
    &CallMember<&IEcho::LeaveAlone>,     &CallMember<&IEcho::Outs>,
    &CallMember<&IEcho::Keywords>,       &CallMember<&IEcho::Do>,
    &CallMember<&IEcho::Fail>,           &CallMember<&IEcho::Itself>,
    &CallMember<&IEcho::Another>,        &CallMember<&IEcho::Tell>,
    &CallMember<&IEcho::TellFromThread>, &CallMember<&IEcho::TellWhenPumped>};

constexpr MemberInfo kEvents[] = {{"OnNothing", Kind::kMethod, nullptr, 0, ""},
                                  Row("OnTold", kOnTold)};
constexpr MemberCall kEventCalls[] = {&CallMember<&IEchoEvents::OnNothing>,
                                      &CallMember<&IEchoEvents::OnTold>};

}  // namespace

template <>
const InterfaceTable& TableOf<IEcho>() {
  static constexpr InterfaceTable kTable = {
      {IEcho::kName, IEcho::kId, kMembers, std::size(kMembers), "Gives back what it gets."},
      kCalls};
  static_assert(std::size(kMembers) == std::size(kCalls));
  return kTable;
}
template <>
const InterfaceTable& TableOf<IEchoEvents>() {
  static constexpr InterfaceTable kTable = {
      {IEchoEvents::kName, IEchoEvents::kId, kEvents, std::size(kEvents), ""}, kEventCalls};
  return kTable;
}

namespace {

/// The text of a value; that of the type's number where it has none.
String TextOf(Variant value) {
  const std::string type = std::to_string(value.Tag());
  return Succeeded(value.ChangeType(VariantType::kString)) ? value.ToString() : String(type);
}

/// What a worker has to tell.
struct Message : CThreadMsg {
  std::int32_t number = 0;
  Variant value;
};

/// Brings it to the thread of an object, which tells it.
class Bridge final : public CThreadMsgProxy {
 public:
  explicit Bridge(IEcho& echo) : echo_(echo) {}
  ~Bridge() override { Close(); }
  void Handle(CThreadMsg& message) override {
    const auto& told = static_cast<const Message&>(message);
    (void)echo_.Tell(told.number, told.value);
  }

 private:
  IEcho& echo_;
};

class EchoObject final : public ComponentObject<CallableByName<IEcho>, EventSource<IEchoEvents>> {
 public:
  explicit EchoObject(IObject* outer) : ComponentObject(outer) {}

  Status get_Short(std::int16_t* pVal) override { return Give(short_, pVal); }
  Status put_Short(std::int16_t newVal) override { return Take(newVal, short_); }
  Status get_Long(std::int32_t* pVal) override { return Give(long_, pVal); }
  Status put_Long(std::int32_t newVal) override { return Take(newVal, long_); }
  Status get_Float(float* pVal) override { return Give(float_, pVal); }
  Status put_Float(float newVal) override { return Take(newVal, float_); }
  Status get_Double(double* pVal) override { return Give(double_, pVal); }
  Status put_Double(double newVal) override { return Take(newVal, double_); }
  Status get_When(Date* pVal) override { return Give(when_, pVal); }
  Status put_When(Date newVal) override { return Take(newVal, when_); }
  Status get_Truth(VariantBool* pVal) override { return Give(truth_, pVal); }
  Status put_Truth(VariantBool newVal) override { return Take(newVal, truth_); }
  Status get_Byte(std::uint8_t* pVal) override { return Give(byte_, pVal); }
  Status put_Byte(std::uint8_t newVal) override { return Take(newVal, byte_); }
  Status get_Text(String* pVal) override { return Give(text_, pVal); }
  Status put_Text(const String& newVal) override { return Take(newVal, text_); }
  Status get_Friend(IEcho** pVal) override {
    *pVal = Ref<IEcho>(friend_).Detach();
    return kOk;
  }
  /// By value: a text, which is kept as such.
  Status put_Friend(const Variant& newVal) override { return Take(TextOf(newVal), text_); }
  Status putref_Friend(IEcho* newVal) override { return Take(Ref<IEcho>(newVal), friend_); }
  Status get_Cell(std::int32_t Row, const Variant& Column, std::int32_t Layer,
                  String* pVal) override {
    *pVal = std::to_string(Row) + "," + (Column.IsEmpty() ? "none" : TextOf(Column).Utf8()) + "," +
            std::to_string(Layer) + "=" + text_.Utf8();
    return kOk;
  }
  Status put_Cell(std::int32_t Row, const Variant& Column, std::int32_t Layer,
                  const Variant& newVal) override {
    text_ = std::to_string(Row) + "," + (Column.IsEmpty() ? "none" : TextOf(Column).Utf8()) + "," +
            std::to_string(Layer) + ":" + TextOf(newVal).Utf8();
    return kOk;
  }
  Status get_Lonely(std::int32_t Index, std::int32_t* pVal) override { return Give(-Index, pVal); }
  Status put_Deaf(std::int32_t Index, std::int32_t newVal) override {
    return Take(Index + newVal, long_);
  }
  Status get_Voxel(std::int32_t* pVal) override { return Give(long_, pVal); }
  Status put_Voxel(std::int32_t newVal) override { return Take(newVal, long_); }
  Status Echo(const Variant& value, Variant* pVal) override { return Give(value, pVal); }
  Status TypeOf(const Variant& value, std::int32_t* tag) override {
    return Give(std::int32_t{value.Tag()}, tag);
  }
  Status SignedByte(std::int32_t number, Variant* pVal) override {
    return Give(Variant(static_cast<std::int8_t>(number)), pVal);
  }
  Status IsNull(const String& text, VariantBool* pVal) override {
    return Give(VariantBool(text.IsNull()), pVal);
  }
  Status Mix(std::int32_t* a, std::int16_t b, String* c, Variant* d, double e,
             double* sum) override {
    *sum = *a + b + e;
    *a += 1;
    *c = std::to_string(b);
    *d = Variant(VariantArray(VariantType::kShort, 3));
    return kOk;
  }
  Status LeaveAlone(VariantBool write, std::int32_t* number, String* text, Variant* any) override {
    if (!write) return kOk;
    *number = 77;
    *text = "written";
    *any = Variant(1.5);
    return kOk;
  }
  Status Outs(std::int32_t* first, std::int32_t given, VariantBool* second) override {
    *first = given + 1;
    *second = given > 0;
    return kOk;
  }
  Status Keywords(std::int32_t from, std::int32_t self, std::int32_t lambda,
                  std::int32_t* sum) override {
    return Give(from * 100 + self * 10 + lambda, sum);
  }
  Status Do(VariantBool itself) override { return itself ? kOk : kFalse; }
  Status Fail(std::int32_t status, const String& words) override {
    if (!words.IsNull()) Report(class_id::kDCMOptions, words.Utf8().c_str(), IEcho::kId);
    return status;
  }
  Status Itself(IEcho** pVal) override {
    *pVal = Ref<IEcho>(this).Detach();
    return kOk;
  }
  Status Another(IEcho** pVal) override {
    return CreateObjectOf<EchoObject>(nullptr, IEcho::kId, reinterpret_cast<void**>(pVal));
  }
  Status Tell(std::int32_t number, const Variant& value) override {
    Fire<&IEchoEvents::OnNothing>();
    Fire<&IEchoEvents::OnTold>(number, value, static_cast<IEcho*>(this));
    return kOk;
  }
  Status TellFromThread(std::int32_t number, const Variant& value) override {
    std::thread([&] { (void)Tell(number, value); }).join();
    return kOk;
  }
  Status TellWhenPumped(std::int32_t number, const Variant& value) override {
    if (!bridge_.Create(static_cast<IEcho*>(this))) return kUnexpected;
    auto message = std::make_unique<Message>();
    message->number = number;
    message->value = value;
    std::unique_ptr<CThreadMsg> posted = std::move(message);
    std::thread([&] { bridge_.Post(posted); }).join();
    return kOk;
  }

 private:
  template <class T>
  static Status Give(const T& kept, T* to) {
    *to = kept;
    return kOk;
  }
  template <class T>
  static Status Take(const T& given, T& kept) {
    kept = given;
    return kOk;
  }

  std::int16_t short_ = 0;
  std::int32_t long_ = 0;
  float float_ = 0;
  double double_ = 0;
  Date when_;
  VariantBool truth_;
  std::uint8_t byte_ = 0;
  String text_;
  Ref<IEcho> friend_;
  Bridge bridge_{*this};
};

}  // namespace
}  // namespace tessaret

/// A new object, as tessaret_create gives one.
extern "C" std::int32_t tessaret_test_create(tessaret_object** object);

std::int32_t tessaret_test_create(tessaret_object** object) {
  using namespace tessaret;
  IDispatch* made = nullptr;
  const Status status =
      CreateObjectOf<EchoObject>(nullptr, IDispatch::kId, reinterpret_cast<void**>(&made));
  *object = GiveHandle(Ref<IDispatch>::Adopt(made));
  return status;
}
