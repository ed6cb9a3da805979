#include "make_input.h"

#include <fstream>
#include <stdexcept>
#include <string>

#include "codec_series.h"
#include "ct_series.h"
#include "many_elements.h"

namespace tessaret::bench {
namespace {

namespace fs = std::filesystem;

/// A file that is written last: the input is whole. It holds a word for what was made.
constexpr const char* kMarkName = "MADE";
/// The same for what codecs made, which may be other ones the next time.
constexpr const char* kCodecMarkName = "MADE-CODECS";

constexpr const char* kInputNames[] = {"BIG",   "CT400E", "CT400I",  "TINY",        "MANYE",
                                       "MANYI", "MANYD",  kMarkName, kCodecMarkName};

struct InputPlan {
  const char* mark;
  VolumeSize volume;
  VolumeSize tiny;
  ManySize many;
};

// The word changes with what is made, so that input of an earlier kind is not taken for this one.
constexpr InputPlan kFullPlan = {"full 1", {512, 512, 400}, {64, 64, 2000}, {20, 100}};
constexpr InputPlan kShortPlan = {"short 1", {32, 24, 8}, {16, 16, 20}, {2, 5}};

std::string ReadMark(const fs::path& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

void WriteMark(const fs::path& path, const std::string& mark) {
  std::ofstream file(path);
  file << mark << '\n';
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

void WriteAll(const InputPlan& plan, const fs::path& folder) {
  const auto volume = MakePhantom(plan.volume);
  WriteMultiFrame(plan.volume, volume, folder / "BIG");
  WriteCtSeries({plan.volume, 0.7, 0.8, 1, "PID-1"}, volume, Syntax::kExplicit, folder / "CT400E");
  WriteCtSeries({plan.volume, 0.7, 0.8, 2, "PID-1"}, volume, Syntax::kImplicit, folder / "CT400I");
  WriteCtSeries({plan.tiny, 5.6, 0.16, 3, "PID-2"}, MakePhantom(plan.tiny), Syntax::kExplicit,
                folder / "TINY");
  WriteManyElements(plan.many, ManyForm::kExplicit, folder / "MANYE");
  WriteManyElements(plan.many, ManyForm::kImplicit, folder / "MANYI");
  WriteManyElements(plan.many, ManyForm::kExplicitDefined, folder / "MANYD");
}

template <class Make>
void MakeUnless(const fs::path& folder, const char* markName, const std::string& mark, Make make) {
  if (ReadMark(folder / markName) == mark) return;
  fs::remove(folder / markName);
  fs::create_directories(folder);
  make();
  WriteMark(folder / markName, mark);
}

}  // namespace

void MakeInput(const fs::path& folder, InputSize size) {
  const InputPlan& plan = size == InputSize::kFull ? kFullPlan : kShortPlan;
  MakeUnless(folder, kMarkName, plan.mark, [&] {
    for (const char* name : kInputNames) fs::remove_all(folder / name);
    WriteAll(plan, folder);
  });
  MakeUnless(folder, kCodecMarkName, plan.mark + CompressibleMethods(),
             [&] { WriteCompressedSeries(folder / "CT400E", folder); });
}

}  // namespace tessaret::bench
