// Which classes there are, under which names: the factory of the library.
#pragma once

#include <span>
#include <string_view>

#include "tessaret/object.hpp"

namespace tessaret {

/// What a class is known by for ever: 128 bits, as with interfaces.
using ClassId = InterfaceId;

/// Makes an object of a class and gives its interface `id`, with a reference for the caller. `outer` is the object that it becomes
/// a part of, or null; then `id` has to be that of IObject.
using CreateObject = Status (*)(IObject* outer, const InterfaceId& id, void** object);

struct ClassRow {
  std::string_view name;  // without a version, such as "Tessaret.DCMObject"; ends with a NUL
  ClassId id;
  std::string_view interface;  // the main one
  std::string_view events;     // empty where the class has none
  CreateObject create;
};

/// Puts `classes`, which stay the caller's and outlive every use, in place of what was there. Before any object is made.
void RegisterClasses(std::span<const ClassRow> classes);
std::span<const ClassRow> Classes();

/// The row of a name, with or without ".1" behind it; letters of either case are the same. Null where there is none.
const ClassRow* FindClass(std::string_view name);
/// Null where there is none.
const ClassRow* FindClass(const ClassId& id);

}  // namespace tessaret
