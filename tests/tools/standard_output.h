// What a piece of work writes to standard output.
#pragma once

#include <unistd.h>

#include <array>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "output.h"
#include "support/child_process.h"

namespace tessaret::tool {

/// The bytes that `work` writes, in a process of its own and closed behind it; "failed" when that does not come to its end.
inline std::string StandardOutputOf(const std::function<void(Output& output)>& work) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), &std::fclose);
  const int code = test::RunInChild([&] {
    ::dup2(::fileno(file.get()), STDOUT_FILENO);
    Output output;
    work(output);
    output.Close();
    return 0;
  });
  if (code != 0) return "failed";
  std::string bytes;
  std::array<char, 4096> part;
  std::rewind(file.get());
  while (const std::size_t count = std::fread(part.data(), 1, part.size(), file.get()))
    bytes.append(part.data(), count);
  return bytes;
}

}  // namespace tessaret::tool
