/// The library from C, and through it from any other language: objects by name, members by name, values of any type.
///
/// All text is UTF-8; bytes that are none come through as they are. Booleans of values are -1 and 0. Every function that answers an
/// int32_t answers a status: 0 or above after success, below 0 after a failure, of which tessaret_last_error_text() may know more
/// (the numbers are those of tessaret/status.hpp, for instance 0x80020009 for a failure with words).
///
/// Who owns what: an object that a function gives is a reference for the caller, who gives it back with tessaret_release. A value
/// that the caller makes only points to his own text and entries, which have to stay until the call returns. A value that the
/// library fills owns what it points to, and the caller clears it with tessaret_clear; to clear a value that owns nothing does no
/// harm, so that every value may be cleared when it is done with.
///
/// A pointer to an object that the host does not hold, because he has given it back already or it never was one, is not followed:
/// what takes it answers 0x80070006, or does nothing. Only where a newer object has come to the same place is it taken for that.
///
/// An object belongs to the thread that made it. tessaret_retain and tessaret_release may be called from any thread.
#ifndef TESSARET_TESSARET_H
#define TESSARET_TESSARET_H

#include <stddef.h>
#include <stdint.h>

#include "tessaret/version.h"

#ifdef __cplusplus
extern "C" {
#endif

/// An object of the library.
typedef struct tessaret_object tessaret_object;

/// What a value holds. With TESSARET_ARRAY added: an array of it.
enum {
  TESSARET_EMPTY = 0,
  TESSARET_SHORT = 2,   ///< signed 16 bits
  TESSARET_LONG = 3,    ///< signed 32 bits
  TESSARET_FLOAT = 4,   ///< 32 bits
  TESSARET_DOUBLE = 5,  ///< 64 bits
  TESSARET_DATE =
      7,  ///< days since 1899-12-30 as a double; before that day the fraction still counts forwards
  TESSARET_STRING = 8,        ///< text, or null
  TESSARET_OBJECT = 9,        ///< an object, or null
  TESSARET_BOOL = 11,         ///< 16 bits; true is -1
  TESSARET_SIGNED_BYTE = 16,  ///< 8 bits
  TESSARET_BYTE = 17,         ///< unsigned 8 bits
  TESSARET_ARRAY = 0x2000
};

/// One dimension of an array: its entries have the indices lower to lower + count - 1.
typedef struct tessaret_bound {
  int32_t lower;
  uint32_t count;
} tessaret_bound;

/// The entries of an array lie without gaps; the index of the first dimension runs fastest. A bool has 16 bits there, a date 64.
typedef struct tessaret_array {
  const tessaret_bound* bounds;
  void* entries;
  uint64_t count;  ///< of entries, all dimensions together
  uint32_t dimensions;
} tessaret_array;

typedef struct tessaret_value {
  uint16_t type;
  uint16_t
      owned;  ///< not 0: tessaret_clear frees what is pointed to; set by the library alone, 0 in values of the caller
  uint32_t
      length;  ///< of text in bytes, without the 0 behind it; where it is 0 and the text is not, the text ends at its first 0
  /// The text comes first, so that {0} clears all of it.
  union {
    const char* string_value;
    int16_t short_value;
    int32_t long_value;
    float float_value;
    double double_value;
    double date_value;
    int16_t bool_value;
    int8_t signed_byte_value;
    uint8_t byte_value;
    tessaret_object* object_value;
    const tessaret_array* array_value;
  } as;
} tessaret_value;

/// How a member is used.
enum { TESSARET_METHOD = 1, TESSARET_GET = 2, TESSARET_PUT = 4, TESSARET_PUTREF = 8 };

/// What an argument is for.
enum {
  TESSARET_IN = 0,
  TESSARET_OPTIONAL = 1,  ///< may be left away at the end, or be empty
  TESSARET_INOUT = 2,     ///< read, and replaced
  TESSARET_OUT = 3,       ///< replaced; may be left away at the end
  TESSARET_RESULT = 4     ///< what the call gives back; it is no argument of the call
};

/// The type of an argument that takes any value.
#define TESSARET_ANY 0xFFFF

/// Descriptions of what an object can do. They live as long as the library.
typedef struct tessaret_argument_info {
  const char* name;
  int32_t flow;
  uint16_t type;
  /// Which interface an object has to have, or which enumeration a number is of; empty for all else.
  const char* interface_name;
} tessaret_argument_info;

typedef struct tessaret_member_info {
  const char* name;
  int32_t kind;
  const tessaret_argument_info* arguments;  ///< in the order of the call; a result stands last
  uint32_t argument_count;
  const char* help;
} tessaret_member_info;

typedef struct tessaret_interface_info {
  const char* name;
  uint64_t id[2];
  const tessaret_member_info* members;
  uint32_t member_count;
  const char* help;
} tessaret_interface_info;

/// One value of an enumeration. `help` may be empty where the name says it all.
typedef struct tessaret_enumerator {
  const char* name;
  const char* help;
  int32_t value;
} tessaret_enumerator;

typedef struct tessaret_enumeration {
  const char* name;
  const tessaret_enumerator* members;  ///< in the order of their values
  uint32_t member_count;
  const char* help;
} tessaret_enumeration;

/// All enumerations whose values the interfaces take and give, in the order of their names; `count`, which may be null, gets how many
/// they are. They live as long as the library. Names of values are unique among all of them.
const tessaret_enumeration* tessaret_enumerations(uint32_t* count);

/// Makes an object of the class `name`, such as "Tessaret.DCMOptions". `*object` is null after a failure.
int32_t tessaret_create(const char* name, tessaret_object** object);

/// Takes one more reference. Null is let pass.
void tessaret_retain(tessaret_object* object);
/// Gives a reference back; with the last one the object dies. Null is let pass.
void tessaret_release(tessaret_object* object);

/// Another interface of the same object, by its name, such as "IDcmObjectManager"; letters of either case are the same. What `*other`
/// gets is a reference of its own to that object, which describes and calls that interface. "IDispatch" leads back to the one that
/// tessaret_create gave. 0x80004002, with `*other` null, where the object or the library has no such interface.
int32_t tessaret_query(tessaret_object* object, const char* name, tessaret_object** other);

/// What the object can do; null for a null object.
const tessaret_interface_info* tessaret_describe(tessaret_object* object);
/// The events that it tells of; null where it has none.
const tessaret_interface_info* tessaret_describe_events(tessaret_object* object);

/// The number of a member, for tessaret_call; letters of either case are the same. It may be kept for all objects with
/// this interface.
int32_t tessaret_find(tessaret_object* object, const char* name, int32_t kind, int32_t* member);

/// Calls a member. Arguments that it writes are replaced by values for the caller to clear; what the caller had put there stays his
/// own. They are read before all the same, since the member may leave them alone: {0} will do. `result` may be null; what it held is
/// not looked at, and it is none of the arguments. After a failure arguments and result are as they were.
int32_t tessaret_call(tessaret_object* object, int32_t member, tessaret_value* arguments,
                      uint32_t count, tessaret_value* result);

/// The same with the name of the member: the two calls above in one.
int32_t tessaret_invoke(tessaret_object* object, const char* name, int32_t kind,
                        tessaret_value* arguments, uint32_t count, tessaret_value* result);

/// Reads a property; `arguments` say which, where it has arguments.
int32_t tessaret_get(tessaret_object* object, const char* name, tessaret_value* arguments,
                     uint32_t count, tessaret_value* value);

/// Sets a property: the new value is the last of the arguments. One that takes an object by reference is set by tessaret_invoke
/// with TESSARET_PUTREF.
int32_t tessaret_put(tessaret_object* object, const char* name, tessaret_value* arguments,
                     uint32_t count);

/// Called with the number of an event and its arguments, which may be read until it returns.
typedef void (*tessaret_event)(void* user, int32_t event, const tessaret_value* arguments,
                               uint32_t count);

/// Has `event` called for the events of the object, with `user` as it is given here. `cookie` gets the number of the connection, 0
/// after a failure.
int32_t tessaret_advise(tessaret_object* object, tessaret_event event, void* user,
                        uint32_t* cookie);
/// Ends a connection.
int32_t tessaret_unadvise(tessaret_object* object, uint32_t cookie);

/// Tells the calling thread's events: those of objects that it made and that work in threads of their own. Waits for the first one so many
/// milliseconds, not at all with 0, for ever below 0; signals do not end the wait. How many messages of other threads that were, or a
/// status below 0. What happens meanwhile is left for the next call.
int32_t tessaret_pump(int32_t timeout_ms);
/// A descriptor for the calling thread's own loop, readable while events wait: then tessaret_pump(0) tells them. It stays the library's.
/// Below 0 after a failure.
int32_t tessaret_events_descriptor(void);

/// Frees what a value owns; it is empty afterwards. Null is let pass.
void tessaret_clear(tessaret_value* value);

/// What the last failure of the calling thread said, and the class that it came from: never null, empty where nothing is known,
/// valid until the thread's next failure.
const char* tessaret_last_error_text(void);
const char* tessaret_last_error_source(void);

/// Starts the library, as the first object that is made does otherwise. Where it cannot start the last failure has the file, the line
/// and the reason, and nothing is written to standard error, as is done when an object is the first to ask. What it answers stays so for
/// the process, but where memory ran out or tessaret_cancel_files stopped it: then the next one who asks tries again.
int32_t tessaret_start(void);

/// Not 0 has every call of the library to the file system fail that opens, reads, writes or brings a file to its place, and every one to
/// the network that connects, waits, sends or receives, in all threads, as cancelled by the user; what is half done is tidied up. 0 lets them work again. May be called in a signal handler: a call that waits goes on
/// waiting until a signal breaks it.
void tessaret_cancel_files(int32_t cancel);

/// 1 while no object of the library exists and no lock is held, otherwise 0: then a host may unload it.
int32_t tessaret_can_unload(void);
/// Not 0 keeps the library though no object exists; 0 gives one such lock back.
void tessaret_lock_library(int32_t lock);

#ifdef __cplusplus
}
#endif

#endif
