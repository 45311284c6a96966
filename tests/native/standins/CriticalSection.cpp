// SCriticalSection over the threads of this system.
#include "core/baselib/system/NativeSection_p.h"

#include <new>

#include <pthread.h>
#include <unistd.h>

namespace corvix {

namespace {

pthread_mutex_t* mutexOf(const SCriticalSection& section) {
  return reinterpret_cast<pthread_mutex_t*>(const_cast<SCriticalSection*>(&section));
}

}  // namespace

SCriticalSection::SCriticalSection() noexcept {
  static_assert(sizeof(pthread_mutex_t) <= sizeof section_ && alignof(pthread_mutex_t) <= alignof(void*));
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(mutexOf(*this), &attributes);
  pthread_mutexattr_destroy(&attributes);
}

SCriticalSection::~SCriticalSection() { pthread_mutex_destroy(mutexOf(*this)); }

void SCriticalSection::enter() noexcept { pthread_mutex_lock(mutexOf(*this)); }

bool SCriticalSection::tryEnter() noexcept { return pthread_mutex_trylock(mutexOf(*this)) == 0; }

u32 SCriticalSection::heldCount() const noexcept {
  const auto& mutex = mutexOf(*this)->__data;
  return mutex.__owner == gettid() ? static_cast<u32>(mutex.__count) : 0;
}

void SCriticalSection::leave() noexcept { pthread_mutex_unlock(mutexOf(*this)); }

bool sectionsStayAsTheyAre = false;

void enterContended(CRITICAL_SECTION* section) noexcept { reinterpret_cast<SCriticalSection*>(section)->enter(); }

}  // namespace corvix

BOOL TryEnterCriticalSection(CRITICAL_SECTION* section) {
  return reinterpret_cast<corvix::SCriticalSection*>(section)->tryEnter();
}

void LeaveCriticalSection(CRITICAL_SECTION* section) { reinterpret_cast<corvix::SCriticalSection*>(section)->leave(); }
