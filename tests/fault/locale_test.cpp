// Locales and time zones: nothing that is read, written or said depends on them.
#include <locale.h>
#include <stdlib.h>
#include <time.h>

#include <filesystem>
#include <set>

#include <gtest/gtest.h>

#include "core/dump.h"
#include "fault_helpers.h"
#include "support/child_process.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

/// Everything that comes out of a load and a save, as text.
std::string AllResults(const std::string& place) {
  const auto dictionary = DictionaryOf(std::string(RandomDataSetDictionary()));
  std::string results;
  for (std::uint32_t seed = 0; seed < kSeedFiles; ++seed) {
    DataSetCoder coder(dictionary.get());
    const Bytes bytes = SeedFile(seed);
    const auto object = coder.LoadMemory(bytes.data(), bytes.size(), true, true);
    for (const VR* vr = object->GetFirstVR(); vr != nullptr; vr = object->GetNextVR(vr)) {
      const DumpService service{dictionary.get()};
      results += ElementLine(*vr, &service) + "\n";
    }
    if (!coder.SaveKeeping(place.c_str(), 3, *object)) results += "not saved";
    results += ReadText(place);
    const Bytes liar =
        DataSetBuilder(Encoding::kExplicitLittle).Head(0x0011, 0x1001, "UN", 1234567);
    Bytes block = liar;
    TotallingBuffer total(block, 1000);
    results += ParseFrom(total, Encoding::kExplicitLittle).error.value_or("no words");
  }
  const Bytes numbers = FileOf(Encoding::kExplicitLittle,
                               DataSetBuilder(Encoding::kExplicitLittle)
                                   .Element(0x0018, 0x0050, "DS", "1.5 ")
                                   .Element(0x0070, 0x0022, "FL", Bytes{0, 0, 0xC0, 0x3F}));
  const Loaded loaded = LoadBlock(numbers);
  for (const VR* vr = loaded.object->GetFirstVR(); vr != nullptr;
       vr = loaded.object->GetNextVR(vr)) {
    results += ElementLine(*vr, nullptr) + "\n";
  }
  return results;
}

/// Names of locales that a process can take here: those of the system, and two that are made for the test where the system has
/// their sources.
std::set<std::string> LocalesHere(const TempFolder& folder) {
  std::set<std::string> names = {"C", "C.UTF-8"};
  for (const std::string name : {"de_DE", "tr_TR"}) {
    const std::string made = folder.File(name + ".UTF-8");
    const std::string command = "localedef -i " + name + " -f UTF-8 " + made + " >/dev/null 2>&1";
    if (std::system(command.c_str()) == 0 || std::filesystem::exists(made)) names.insert(made);
    names.insert(name + ".UTF-8");
  }
  return names;
}

TEST(Locale, LoadsAndSavesGiveTheSameInEveryLocaleAndTimeZone) {
  const TempFolder folder;
  const std::string place = folder.File("saved.dcm");
  const std::string expected = AllResults(place);
  for (const std::string& locale : LocalesHere(folder)) {
    for (const char* zone : {"UTC", "Pacific/Kiritimati", "America/St_Johns"}) {
      const int result = RunInChild([&] {
        const std::filesystem::path path(locale);
        if (path.has_parent_path()) ::setenv("LOCPATH", path.parent_path().c_str(), 1);
        ::setlocale(LC_ALL, path.filename().c_str());
        ::setenv("TZ", zone, 1);
        ::tzset();
        return AllResults(place) == expected ? 0 : 1;
      });
      EXPECT_EQ(result, 0) << locale << " " << zone;
    }
  }
}

}  // namespace
}  // namespace tessaret::test
