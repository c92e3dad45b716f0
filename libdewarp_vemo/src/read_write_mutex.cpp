#include <libdewarp_vemo/read_write_mutex.h>

#include <cerrno>

#include <libdewarp_vemo/code_location.h>
#include <libdewarp_vemo/error.h>
#include <libdewarp_vemo/log.h>

namespace vemo {
namespace libdewarp {

ReadWriteMutex::ReadWriteMutex() { Init(); }

ReadWriteMutex::~ReadWriteMutex() { Fini(); }

bool ReadWriteMutex::Init() { return pthread_rwlock_init(&m_stdMutex, nullptr) == 0; }

void ReadWriteMutex::Fini() { pthread_rwlock_destroy(&m_stdMutex); }

bool ReadWriteMutex::LockRead() { return pthread_rwlock_rdlock(&m_stdMutex) == 0; }

bool ReadWriteMutex::LockWrite() { return pthread_rwlock_wrlock(&m_stdMutex) == 0; }

void ReadWriteMutex::Unlock() { pthread_rwlock_unlock(&m_stdMutex); }

namespace {

// Both guards fail the same way: errno 35 and "Lock failure", located in the guard's class.
[[noreturn]] void ThrowLockFailure(const CodeLocation& location) {
  Error::SetLastError(EDEADLK);
  throw Error(location, EDEADLK, "Lock failure");
}

void Release(ReadWriteMutex* mutex) {
  if (mutex) {
    mutex->Unlock();
  } else {
    DEWARP_LOG_WARN("Invalid mutex\n");
  }
}

}  // namespace

ReadLock::ReadLock(ReadWriteMutex& mutex) : m_pobMutex(nullptr) {
  if (!mutex.LockRead()) {
    ThrowLockFailure(CodeLocation(__FILE__, "ReadLock", "ReadLock", __LINE__));
  }
  m_pobMutex = &mutex;
}

ReadLock::~ReadLock() { Release(m_pobMutex); }

WriteLock::WriteLock(ReadWriteMutex& mutex) : m_pobMutex(nullptr) {
  if (!mutex.LockWrite()) {
    ThrowLockFailure(CodeLocation(__FILE__, "WriteLock", "WriteLock", __LINE__));
  }
  m_pobMutex = &mutex;
}

WriteLock::~WriteLock() { Release(m_pobMutex); }

}  // namespace libdewarp
}  // namespace vemo
