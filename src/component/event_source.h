// Connections of sinks to an object, and telling them of events.
#pragma once

#include <cxxabi.h>

#include <array>
#include <cstdint>
#include <vector>

#include "component/call_by_name.h"
#include "tessaret/events.hpp"

namespace tessaret {

/// The connections of one object. One thread at a time; sinks may come and go while they are called.
class Connections {
 public:
  /// `typed` is the sink's event interface, or null where `byNumber` is to be called. At least one is not null.
  struct Sink {
    std::uint32_t cookie = 0;  // 0: it left
    Ref<IObject> typed;
    Ref<IEventSink> byNumber;
  };

  /// Throws std::bad_alloc.
  std::uint32_t Add(Ref<IObject> typed, Ref<IEventSink> byNumber);
  Status Remove(std::uint32_t cookie);
  /// Releases all sinks, and takes none any more. Requires: nobody is told of anything.
  void End();
  [[nodiscard]] bool HasEnded() const { return ended_; }

  /// Calls `tell` with each sink that is connected, from the first to the last. What a sink throws is its own affair.
  template <class Tell>
  void ForEach(Tell tell) {
    const Walk walk(*this);
    const std::size_t count = sinks_.size();
    for (std::size_t at = 0; at < count; ++at) {
      // A copy: the sink may leave, and others may join, while it is called.
      const Sink sink = sinks_[at];
      if (sink.cookie == 0) continue;
      try {
        tell(sink);
      } catch (const abi::__forced_unwind&) {
        throw;  // the thread is being cancelled
      } catch (...) {
      }
    }
  }

 private:
  /// Entries keep their places while somebody walks over them.
  class Walk {
   public:
    explicit Walk(Connections& connections) : connections_(connections) { ++connections_.walks_; }
    ~Walk() {
      if (--connections_.walks_ == 0) connections_.DropThoseWhoLeft();
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

   private:
    Connections& connections_;
  };
  void DropThoseWhoLeft();

  std::vector<Sink> sinks_;
  std::uint32_t lastCookie_ = 0;
  int walks_ = 0;
  bool ended_ = false;
};

/// Gives an object the events of `Events`, an interface with a method an event.
template <class Events>
class EventSource : public IEventSource {
 public:
  static constexpr InterfaceId kId = IEventSource::kId;

  const InterfaceInfo* DescribeEvents() override { return &TableOf<Events>().info; }

  Status Advise(IObject* sink, std::uint32_t* cookie) override {
    if (cookie == nullptr) return kPointer;
    *cookie = 0;
    if (sink == nullptr) return kPointer;
    // Released with the object, when that is taken apart already, it could not leave.
    if (connections_.HasEnded()) return kUnexpected;
    const Ref<IObject> held(sink);
    Ref<Events> typed = held.As<Events>();
    Ref<IEventSink> byNumber = held.As<IEventSink>();
    if (!typed && !byNumber) return kCannotConnect;
    try {
      *cookie = connections_.Add(Ref<IObject>(typed.Get()), std::move(byNumber));
    } catch (const std::bad_alloc&) {
      return kOutOfMemory;
    }
    return kOk;
  }
  Status Unadvise(std::uint32_t cookie) override { return connections_.Remove(cookie); }

  /// When the last reference is gone and the object is whole still: a sink that ends with it may want to leave.
  void LetGoOfSinks() { connections_.End(); }

 protected:
  /// Tells every sink of `kEvent`.
  template <auto kEvent, class... Arguments>
  void Fire(const Arguments&... arguments) {
    // A sink may let go of the last reference but this.
    const Ref<IObject> alive(this);
    connections_.ForEach([&](const Connections::Sink& sink) {
      if (sink.typed) {
        (static_cast<Events*>(sink.typed.Get())->*kEvent)(arguments...);
      } else {
        std::array<Variant, sizeof...(Arguments)> values = {Variant(arguments)...};
        sink.byNumber->OnEvent(NumberOf<kEvent>(), values.data(), values.size());
      }
    });
  }

 private:
  /// By its place in the table.
  template <auto kEvent>
  static std::int32_t NumberOf() {
    std::int32_t number = 0;
    for (const MemberCall call : TableOf<Events>().calls) {
      if (call == &CallMember<kEvent>) break;
      ++number;
    }
    return number;
  }

  Connections connections_;
};

}  // namespace tessaret
