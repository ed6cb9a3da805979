// Members called by their names, as scripts call them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tessaret/tessaret.hpp"

namespace tessaret::test {

/// What the member gives; `arguments` are those of the caller, so that what goes out is there afterwards. A failure is one of the test.
inline Variant CallNamed(IDispatch& object, const std::string& name, MemberKind kind,
                         std::vector<Variant>& arguments) {
  std::int32_t member = -1;
  EXPECT_EQ(object.FindMember(name.c_str(), kind, &member), kOk) << name;
  Variant result;
  EXPECT_EQ(object.Invoke(member, arguments.data(), static_cast<std::uint32_t>(arguments.size()),
                          &result),
            kOk)
      << name;
  return result;
}

}  // namespace tessaret::test
