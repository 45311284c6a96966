// SCriticalSection over the threads of this system.
#include "core/baselib/system/CriticalSection.h"

#include <new>

#include <pthread.h>
#include <unistd.h>

namespace corvix {

namespace {

pthread_mutex_t* native(const SCriticalSection& section) {
  return reinterpret_cast<pthread_mutex_t*>(const_cast<SCriticalSection*>(&section));
}

}  // namespace

SCriticalSection::SCriticalSection() noexcept {
  static_assert(sizeof(pthread_mutex_t) <= sizeof section_ && alignof(pthread_mutex_t) <= alignof(void*));
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(native(*this), &attributes);
  pthread_mutexattr_destroy(&attributes);
}

SCriticalSection::~SCriticalSection() { pthread_mutex_destroy(native(*this)); }

void SCriticalSection::enter() noexcept { pthread_mutex_lock(native(*this)); }

bool SCriticalSection::tryEnter() noexcept { return pthread_mutex_trylock(native(*this)) == 0; }

u32 SCriticalSection::heldCount() const noexcept {
  const auto& mutex = native(*this)->__data;
  return mutex.__owner == gettid() ? static_cast<u32>(mutex.__count) : 0;
}

void SCriticalSection::leave() noexcept { pthread_mutex_unlock(native(*this)); }

}  // namespace corvix
