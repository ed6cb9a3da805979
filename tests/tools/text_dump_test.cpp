#include "text_dump.h"

#include <signal.h>

#include <gtest/gtest.h>

#include "core/element_maker.h"
#include "interrupt.h"
#include "support/child_process.h"

namespace tessaret::tool {
namespace {

TEST(DumpText, AnInterruptEndsItAtTheNextLine) {
  DICOMObject object;
  object.Push(test::NewElement(0x0010, 0x0010, type_code::PN, "Doe"));
  const auto interruptedBefore = [&](bool interrupt) {
    return test::RunInChild([&] {
      Host host;
      host.Tags();  // an interrupt cancels reading too
      WatchForInterrupts();
      if (interrupt) ::raise(SIGINT);
      try {
        DumpText(object, host);  // too little to be sent
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
