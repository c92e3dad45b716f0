// Objects of a maker's C++ class, made without linking against the maker's library.
//
// The library exports the class's constructor and destructor under their C++ (Itanium ABI)
// names; the adapter resolves them into a call table as functions taking the object's address
// as their first argument, which is how g++ passes `this` on both i386 and x86-64 Linux. The
// storage is the plug-in's own: sizeof(T) of the class as declared in the project (see the
// maker's header there for the size it reserves).
#ifndef DEWARPWRAPPER_MAKERS_MAKEROBJECT_H
#define DEWARPWRAPPER_MAKERS_MAKEROBJECT_H

#include <new>

// Table provides `void (*Construct)(T*)` and `void (*Destruct)(T*)`. Null when no storage could
// be had or the constructor threw; nothing escapes into the host.
template <class T, class Table>
T* ConstructMakerObject(const Table& calls) {
  void* storage = ::operator new(sizeof(T), std::nothrow);
  if (storage == nullptr) {
    return nullptr;
  }
  T* object = static_cast<T*>(storage);
  try {
    calls.Construct(object);
  } catch (...) {
    ::operator delete(storage);
    return nullptr;
  }
  return object;
}

// Runs the exported destructor, frees the storage and forgets the object; null is ignored.
template <class T, class Table>
void DestroyMakerObject(const Table& calls, T*& object) {
  if (object == nullptr) {
    return;
  }
  try {
    calls.Destruct(object);
  } catch (...) {
    // A destructor that throws leaves nothing more to undo here.
  }
  ::operator delete(static_cast<void*>(object));
  object = nullptr;
}

#endif
