// For GCC and clang on 32-bit x86, which have no structured-exception blocks: a hand-made registration frame.
#include "shell/guard/FloatingPointMode_p.h"
#include "shell/guard/GuardedCall_p.h"

#include <windows.h>

namespace corvix {

namespace {

struct Frame {
  Frame* previous;
  EXCEPTION_DISPOSITION (*handler)(EXCEPTION_RECORD*, void*, CONTEXT*, void*);
  void* resume[5];  // for __builtin_longjmp
  DWORD code;
  bool hasEnded;
};

constexpr DWORD kUnwinding = 0x2 | 0x4;

EXCEPTION_DISPOSITION onException(EXCEPTION_RECORD* record, void* establisher, CONTEXT*, void*);

// Whether there is a guard further up. What calls itself through a guard overflows the stack just below one: nothing
// can be done there, not even to guard the stack again.
bool isTooDeep(const Frame& frame) noexcept {
  constexpr std::uintptr_t kRoom = 16 * 1024;
  const auto* const last = reinterpret_cast<const Frame*>(~std::uintptr_t{0});
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  if (reinterpret_cast<std::uintptr_t>(&frame) - here >= kRoom) return false;
  const Frame* outer = frame.previous;
  while (outer != last && outer->handler != onException) outer = outer->previous;
  return outer != last;
}

EXCEPTION_DISPOSITION onException(EXCEPTION_RECORD* record, void* establisher, CONTEXT*, void*) {
  if (record->ExceptionFlags & kUnwinding) return ExceptionContinueSearch;
  auto* const frame = static_cast<Frame*>(establisher);
  if (record->ExceptionCode == EXCEPTION_STACK_OVERFLOW && isTooDeep(*frame)) return ExceptionContinueSearch;
  frame->code = record->ExceptionCode;
  frame->hasEnded = true;
  RtlUnwind(frame, nullptr, record, nullptr);
  __builtin_longjmp(frame->resume, 1);
}

Frame* topFrame() noexcept {
  Frame* top;
  asm volatile("movl %%fs:0, %0" : "=r"(top));
  return top;
}

void setTopFrame(Frame* frame) noexcept { asm volatile("movl %0, %%fs:0" : : "r"(frame) : "memory"); }

}  // namespace

// Not inlined: the frame must be the only thing that lives across the resumption.
[[gnu::noinline]] std::optional<u32> guardedCall(void (*function)(void*), void* argument) noexcept {
  Frame frame;  // what is not set here is set before it is read
  frame.previous = topFrame();
  frame.handler = onException;
  frame.hasEnded = false;
  Frame* volatile const self = &frame;
  const FloatingPointMode mode;
  setTopFrame(&frame);
  if (__builtin_setjmp(frame.resume) == 0) function(argument);
  setTopFrame(self->previous);
  if (self->hasEnded) asm volatile("fninit");  // registers that were in use would stay so
  mode.restore();
  if (!self->hasEnded) return std::nullopt;
  if (self->code == EXCEPTION_STACK_OVERFLOW) guardStackAgain();
  return self->code;
}

}  // namespace corvix
