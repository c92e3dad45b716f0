// Run-time access to the camera makers' dewarping libraries. The plug-in never links against
// them: they are closed libraries that only some users install, and a host without them must
// still load the plug-in. Each adapter names its library's file and the calls it makes in a
// table of function pointers; MakerCalls<Table> opens the file the first time an adapter asks
// and resolves every call of the table. Only a complete table is handed out: a library that is
// missing, or lacks any one of the calls, counts as absent.
#ifndef DEWARPWRAPPER_MAKERS_MAKERLIBRARY_H
#define DEWARPWRAPPER_MAKERS_MAKERLIBRARY_H

class MakerLibrary {
public:
  // Opens the library by file name through the dynamic loader's usual search. All of its
  // symbols are bound at once (a library with unresolved dependencies fails here, not in the
  // middle of a frame) and kept local to it.
  explicit MakerLibrary(const char* fileName);
  // The library stays loaded for the life of the process: dewarpers may still hold objects of
  // the library while the plug-in itself is being unloaded, and their release needs its code.
  ~MakerLibrary() = default;

  MakerLibrary(const MakerLibrary&) = delete;
  MakerLibrary& operator=(const MakerLibrary&) = delete;

  bool IsOpen() const { return m_handle != nullptr; }

  // Address of an exported symbol; null when the library is not open or lacks it.
  void* Find(const char* name) const;

  // Sets `function` to the exported function `name` (null when missing); true when found.
  template <class Function>
  bool Resolve(const char* name, Function& function) const {
    void* address = Find(name);
    function = reinterpret_cast<Function>(address);
    return address != nullptr;
  }

private:
  void* m_handle;
};

// The resolved calls of one maker's library. Table is a record of function pointers with
//   static const char* const LibraryName;            the file name the loader searches for
//   bool Bind(const MakerLibrary& library);          resolves every pointer, false if one is missing
// Get() loads the library once per process (the first time any adapter asks; the local static
// makes that safe from several threads) and answers null when the library or a call is missing.
template <class Table>
class MakerCalls {
public:
  static const Table* Get() {
    static const Loaded loaded;
    return loaded.Complete ? &loaded.Calls : nullptr;
  }

private:
  struct Loaded {
    Loaded() : Calls(), Complete(false) {
      MakerLibrary library(Table::LibraryName);
      Complete = library.IsOpen() && Calls.Bind(library);
    }
    Table Calls;
    bool Complete;
  };
};

#endif
