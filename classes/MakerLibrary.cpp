#include "makers/MakerLibrary.h"

#include <dlfcn.h>

MakerLibrary::MakerLibrary(const char* fileName)
    : m_handle(fileName != nullptr ? dlopen(fileName, RTLD_NOW | RTLD_LOCAL) : nullptr) {
  if (m_handle == nullptr) {
    // Clear the loader's error text so that it cannot be mistaken for a later failure.
    dlerror();
  }
}

void* MakerLibrary::Find(const char* name) const {
  if (m_handle == nullptr || name == nullptr) {
    return nullptr;
  }
  void* address = dlsym(m_handle, name);
  if (address == nullptr) {
    dlerror();
  }
  return address;
}
