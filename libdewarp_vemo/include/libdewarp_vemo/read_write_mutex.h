// The channel's POSIX read-write lock and its scoped guards.
#pragma once

#include <pthread.h>

namespace vemo {
namespace libdewarp {

class ReadWriteMutex {
public:
  ReadWriteMutex();
  virtual ~ReadWriteMutex();

  bool Init();
  void Fini();
  bool LockRead();
  bool LockWrite();
  void Unlock();

private:
  ReadWriteMutex(const ReadWriteMutex&) = delete;
  ReadWriteMutex& operator=(const ReadWriteMutex&) = delete;

  pthread_rwlock_t m_stdMutex;
};

// Holds the read side of a ReadWriteMutex for its lifetime. A failed lock sets errno 35 and throws
// Error "Lock failure"; the guard then holds nothing.
class ReadLock {
public:
  explicit ReadLock(ReadWriteMutex& mutex);
  virtual ~ReadLock();

private:
  ReadLock(const ReadLock&) = delete;
  ReadLock& operator=(const ReadLock&) = delete;

  ReadWriteMutex* m_pobMutex;
};

// Holds the write side of a ReadWriteMutex for its lifetime; fails like ReadLock.
class WriteLock {
public:
  explicit WriteLock(ReadWriteMutex& mutex);
  virtual ~WriteLock();

private:
  WriteLock(const WriteLock&) = delete;
  WriteLock& operator=(const WriteLock&) = delete;

  ReadWriteMutex* m_pobMutex;
};

}  // namespace libdewarp
}  // namespace vemo
