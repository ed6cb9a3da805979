#include "text_dump.h"

#include <signal.h>

#include <gtest/gtest.h>

#include "class_object.h"
#include "interrupt.h"
#include "support/child_process.h"

namespace tessaret::tool {
namespace {

TEST(DumpText, AnInterruptEndsItAtTheNextLine) {
  SourceFile source;
  source.object = NewObject();
  ASSERT_EQ(source.object->PutVRRawString(0x0010, 0x0010, "PN", "Doe"), kOk);
  source.listing = Listing(*source.object);
  const auto interruptedBefore = [&](bool interrupt) {
    return test::RunInChild([&] {
      Host host;
      WatchForInterrupts();
      if (interrupt) ::raise(SIGINT);
      try {
        DumpText(source, host);  // too little to be sent
      } catch (const Interrupted&) {
        return 1;
      }
      return 0;
    });
  };
  EXPECT_EQ(interruptedBefore(true), 1);
  EXPECT_EQ(interruptedBefore(false), 0);
}

}  // namespace
}  // namespace tessaret::tool
