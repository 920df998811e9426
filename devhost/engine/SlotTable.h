#ifndef DEVHOST_ENGINE_SLOT_TABLE_H
#define DEVHOST_ENGINE_SLOT_TABLE_H

#include <cstddef>
#include <typeinfo>

namespace devhost {

// The functions that an interface of a module calls by slot. The host puts functions of its own in front of them, in one
// object at a time: the object's pointer to its table is led to a copy, in which the first slots are the host's. Everything
// else about the object stays as it is: its address, its type, what dynamic_cast finds, its other slots, its members. Its
// destructor leads the pointer back on its own. Tables are copied once for each module and live to the end of the process,
// because an object may outlive its host.
//
// docs/decisions/watched-calls.md says why it is done like this.
//
// `object` is an interface without members. False, and nothing done, when it does not prove to be one: it has no type
// information, another type than `interface` or one derived from it, or its table is not constant data of a module. The same
// for an object that is itself constant data.
bool PutInFront(void* object, const std::type_info& interface, const void* const* functions, std::size_t count);

// What the host has put its functions in front of: the function of the object's own class in that slot; null for an object
// that has no function of the host's in front. Any thread may call it.
const void* FunctionBehind(const void* object, std::size_t slot) noexcept;

}  // namespace devhost

#endif
