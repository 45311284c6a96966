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

EXCEPTION_DISPOSITION onException(EXCEPTION_RECORD* record, void* establisher, CONTEXT*, void*) {
  if (record->ExceptionFlags & kUnwinding) return ExceptionContinueSearch;
  auto* const frame = static_cast<Frame*>(establisher);
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
  Frame frame = {topFrame(), onException, {}, 0, false};
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
