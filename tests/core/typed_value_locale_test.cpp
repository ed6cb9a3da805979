// Values are read and written the same in every locale and time zone.
#include <locale.h>
#include <stdlib.h>
#include <time.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/variant_vr.h"
#include "support/child_process.h"
#include "support/temp_folder.h"
#include "value_maker.h"

namespace tessaret::test {
namespace {

std::string AfterPut(VrCode type, const Variant& value) {
  const auto vr = Owned(type);
  return CVariantVR(vr.get()).VariantToVR(value, 0) ? Held(*vr) : "refused";
}

Variant Got(VrCode type, std::string_view text) {
  const auto vr = Owned(type, text);
  return CVariantVR(vr.get()).VRToVariant(0);
}

bool AllIsAsEver() {
  return AfterPut(type_code::DS, Variant(1234.5)) == "1234.500000" &&
         AfterPut(type_code::DS, Variant("1.25")) == "1.250000" &&
         AfterPut(type_code::DS, Variant("1,25")) == "refused" &&
         AfterPut(type_code::IS, Variant(1234567)) == "1234567" &&
         AfterPut(type_code::LO, Variant(1.5)) == "1.5" &&
         AfterPut(type_code::LO, Variant(true)) == "True" &&
         AfterPut(type_code::DA, Variant(Date{36925})) == "20010203" &&
         AfterPut(type_code::DT, Variant(Date{36925.25})) == "20010203060000.000000" &&
         AfterPut(type_code::TM, Variant("1:2:3.4")) == "010203.4" &&
         Got(type_code::DS, "1.5").AsDouble() == 1.5 && Got(type_code::DS, "1,5").AsDouble() == 1 &&
         Got(type_code::IS, "1.234").AsLong() == 1 &&
         Got(type_code::DA, "20010203").AsDate() == Date{36925} &&
         Got(type_code::TM, "0930").ToString() == String("09:30:00");
}

TEST(TypedValueLocale, ValuesAreTheSameInEveryLocaleAndTimeZone) {
  EXPECT_TRUE(AllIsAsEver());
  const TempFolder folder;
  for (const std::string name : {"de_DE", "tr_TR", "C"}) {
    const std::string made = folder.File(name + ".UTF-8");
    const std::string command = "localedef -i " + name + " -f UTF-8 " + made + " >/dev/null 2>&1";
    const bool isMade =
        name != "C" && (std::system(command.c_str()) == 0 || std::filesystem::exists(made));
    for (const char* zone : {"UTC", "Pacific/Kiritimati", "America/St_Johns"}) {
      const int result = RunInChild([&] {
        if (isMade) ::setenv("LOCPATH", std::filesystem::path(made).parent_path().c_str(), 1);
        ::setlocale(LC_ALL, (name + ".UTF-8").c_str());
        ::setenv("TZ", zone, 1);
        ::tzset();
        // Where the comma is there, it is the comma that is tried.
        if (isMade && std::string(::localeconv()->decimal_point) != ",") return 2;
        return AllIsAsEver() ? 0 : 1;
      });
      EXPECT_EQ(result, 0) << name << " " << zone;
    }
  }
}

}  // namespace
}  // namespace tessaret::test
