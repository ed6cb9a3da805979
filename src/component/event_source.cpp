#include "component/event_source.h"

#include <algorithm>

namespace tessaret {

std::uint32_t Connections::Add(Ref<IObject> typed, Ref<IEventSink> byNumber) {
  sinks_.push_back({0, std::move(typed), std::move(byNumber)});
  // 0 is no connection; after four thousand million the numbers start again.
  if (++lastCookie_ == 0) ++lastCookie_;
  sinks_.back().cookie = lastCookie_;
  return lastCookie_;
}

Status Connections::Remove(std::uint32_t cookie) {
  const auto found = std::ranges::find(sinks_, cookie, &Sink::cookie);
  if (cookie == 0 || found == sinks_.end()) return kNoConnection;
  // Released at the end of all: that may end objects which ask for something here once more.
  const Sink gone = std::exchange(*found, Sink());
  if (walks_ == 0) DropThoseWhoLeft();
  return kOk;
}

void Connections::End() {
  ended_ = true;
  // Out of reach before they are released: that may end objects which want to leave.
  const std::vector<Sink> gone = std::exchange(sinks_, {});
}

void Connections::DropThoseWhoLeft() {
  std::erase_if(sinks_, [](const Sink& sink) { return sink.cookie == 0; });
}

}  // namespace tessaret
