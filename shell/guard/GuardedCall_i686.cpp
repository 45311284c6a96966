// For GCC and clang on 32-bit x86, which have no structured-exception blocks: a hand-made registration frame.
#include "shell/guard/GuardedCall_p.h"

#include <windows.h>
#include <malloc.h>

namespace corvix {

namespace {

struct Frame {
  Frame* previous;
  EXCEPTION_DISPOSITION (*handler)(EXCEPTION_RECORD*, void*, CONTEXT*, void*);
  void* resume[5];  // for __builtin_longjmp
  DWORD code;
};

constexpr DWORD kUnwinding = 0x2 | 0x4;

// The mode of the floating-point unit. What a module leaves there would be the program's: other roundings, and
// exceptions where it expects none.
class FloatingPointMode {
 public:
  FloatingPointMode() noexcept : mode_(current()) {}
  void restore() const noexcept {
    if (current() != mode_) asm volatile("fnclex\n\tfldcw %0" : : "m"(mode_));
  }

 private:
  static unsigned short current() noexcept {
    unsigned short mode;
    asm volatile("fnstcw %0" : "=m"(mode));
    return mode;
  }
  unsigned short mode_;
};

EXCEPTION_DISPOSITION onException(EXCEPTION_RECORD* record, void* establisher, CONTEXT*, void*) {
  if (record->ExceptionFlags & kUnwinding) return ExceptionContinueSearch;
  auto* const frame = static_cast<Frame*>(establisher);
  frame->code = record->ExceptionCode;
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
[[gnu::noinline]] u32 guardedCall(void (*function)(void*), void* argument) noexcept {
  Frame frame = {topFrame(), onException, {}, 0};
  Frame* volatile const self = &frame;
  const FloatingPointMode mode;
  setTopFrame(&frame);
  if (__builtin_setjmp(frame.resume) == 0) function(argument);
  setTopFrame(self->previous);
  if (self->code) asm volatile("fninit");  // registers that were in use would stay so
  mode.restore();
  if (self->code == EXCEPTION_STACK_OVERFLOW) _resetstkoflw();  // the next one is an exception again
  return self->code;
}

}  // namespace corvix
