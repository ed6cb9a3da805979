#include "make_input.h"

#include <fstream>
#include <stdexcept>
#include <string>

#include "ct_series.h"
#include "many_elements.h"

namespace tessaret::bench {
namespace {

namespace fs = std::filesystem;

/// A file that is written last: the input is whole. It holds a word for what was made.
constexpr const char* kMarkName = "MADE";

constexpr const char* kInputNames[] = {"BIG",   "CT400E", "CT400I", "TINY",
                                       "MANYE", "MANYI",  "MANYD",  kMarkName};

struct InputPlan {
  const char* mark;
  VolumeSize volume;
  VolumeSize tiny;
  ManySize many;
};

// The word changes with what is made, so that input of an earlier kind is not taken for this one.
constexpr InputPlan kFullPlan = {"full 1", {512, 512, 400}, {64, 64, 2000}, {20, 100}};
constexpr InputPlan kShortPlan = {"short 1", {32, 24, 8}, {16, 16, 20}, {2, 5}};

std::string ReadMark(const fs::path& folder) {
  std::ifstream file(folder / kMarkName);
  std::string line;
  std::getline(file, line);
  return line;
}

void WriteMark(const fs::path& folder, const char* mark) {
  std::ofstream file(folder / kMarkName);
  file << mark << '\n';
  file.close();
  if (!file) throw std::runtime_error("cannot write in " + folder.string());
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

}  // namespace

void MakeInput(const fs::path& folder, InputSize size) {
  const InputPlan& plan = size == InputSize::kFull ? kFullPlan : kShortPlan;
  if (ReadMark(folder) == plan.mark) return;
  for (const char* name : kInputNames) fs::remove_all(folder / name);
  fs::create_directories(folder);
  WriteAll(plan, folder);
  WriteMark(folder, plan.mark);
}

}  // namespace tessaret::bench
