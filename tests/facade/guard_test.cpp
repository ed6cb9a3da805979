// What becomes of the failures that are thrown below the interface.
#include "facade/guard.h"

#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

#include "facade/class_ids.h"
#include "tessaret/idcm_options.hpp"
#include "tessaret/library.hpp"

namespace tessaret {
namespace {

template <class Work>
Status Try(Work work) {
  Report({}, "older words", {});
  return Guarded<IDCMOptions>(class_id::kDCMOptions, work);
}

TEST(Guard, GivesWhatIsThrownAStatusAndWords) {
  const auto expect = [](Status status, Status expected, const char* words) {
    EXPECT_EQ(status, expected);
    EXPECT_EQ(LastError().text, words);
    EXPECT_EQ(LastError().source, "Tessaret.DCMOptions");
  };
  ASSERT_EQ(StartLibrary(), kOk);
  expect(Try([]() -> Status { throw std::runtime_error("what it says"); }), kException,
         "what it says");
  expect(Try([]() -> Status { throw std::bad_alloc(); }), kOutOfMemory, "Not enough memory");
  expect(Try([]() -> Status { throw 7; }), kException, "Unknown error");
}

TEST(Guard, LeavesTheAnswerAndTheWordsOfWorkThatThrowsNothing) {
  EXPECT_EQ(Try([] { return kFalse; }), kFalse);
  EXPECT_EQ(LastError().text, "older words");
}

}  // namespace
}  // namespace tessaret
