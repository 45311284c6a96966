// For GCC and clang on 64-bit x86, which have no structured-exception blocks: a function of our own in the tables by
// which the system finds the handlers of a crash, and its way back into that function.
#include "shell/guard/FloatingPointMode_p.h"
#include "shell/guard/GuardedCall_p.h"
#include "shell/guard/KeptStack_p.h"

#include <windows.h>

namespace corvix {

namespace {

constexpr DWORD kUnwinding = 0x2 | 0x4;
constexpr u64 kEnded = u64{1} << 32;  // above the code, which may be 0

}  // namespace

// Calls the function; comes back with 0, or at corvixGuardedEnd with what the handler gave to RtlUnwindEx. All
// registers that a callee has to keep are kept here, because what crashed may have any of them, and tables that say
// nothing of it.
extern "C" u64 corvixCallGuarded(void (*function)(void*), void* argument) noexcept;
extern "C" const char corvixGuardedEnd[];

extern "C" [[gnu::used]] EXCEPTION_DISPOSITION corvixGuardHandler(EXCEPTION_RECORD* record, void* establisher, CONTEXT*,
                                                                  DISPATCHER_CONTEXT* dispatcher) {
  if (record->ExceptionFlags & kUnwinding) return ExceptionContinueSearch;
  void* const result = reinterpret_cast<void*>(kEnded | record->ExceptionCode);
  RtlUnwindEx(establisher, const_cast<char*>(corvixGuardedEnd), record, result, dispatcher->ContextRecord,
              dispatcher->HistoryTable);
  return ExceptionContinueSearch;  // never reached
}

asm(R"(
    .text
    .globl corvixCallGuarded
    .def corvixCallGuarded; .scl 2; .type 32; .endef
    .seh_proc corvixCallGuarded
corvixCallGuarded:
    pushq %rbp
    .seh_pushreg %rbp
    pushq %rbx
    .seh_pushreg %rbx
    pushq %rsi
    .seh_pushreg %rsi
    pushq %rdi
    .seh_pushreg %rdi
    pushq %r12
    .seh_pushreg %r12
    pushq %r13
    .seh_pushreg %r13
    pushq %r14
    .seh_pushreg %r14
    pushq %r15
    .seh_pushreg %r15
    subq $200, %rsp
    .seh_stackalloc 200
    movaps %xmm6, 32(%rsp)
    .seh_savexmm %xmm6, 32
    movaps %xmm7, 48(%rsp)
    .seh_savexmm %xmm7, 48
    movaps %xmm8, 64(%rsp)
    .seh_savexmm %xmm8, 64
    movaps %xmm9, 80(%rsp)
    .seh_savexmm %xmm9, 80
    movaps %xmm10, 96(%rsp)
    .seh_savexmm %xmm10, 96
    movaps %xmm11, 112(%rsp)
    .seh_savexmm %xmm11, 112
    movaps %xmm12, 128(%rsp)
    .seh_savexmm %xmm12, 128
    movaps %xmm13, 144(%rsp)
    .seh_savexmm %xmm13, 144
    movaps %xmm14, 160(%rsp)
    .seh_savexmm %xmm14, 160
    movaps %xmm15, 176(%rsp)
    .seh_savexmm %xmm15, 176
    .seh_handler corvixGuardHandler, @except
    .seh_endprologue
    movq %rcx, %rax
    movq %rdx, %rcx
    call *%rax
    xorl %eax, %eax
    .globl corvixGuardedEnd
corvixGuardedEnd:
    movaps 32(%rsp), %xmm6
    movaps 48(%rsp), %xmm7
    movaps 64(%rsp), %xmm8
    movaps 80(%rsp), %xmm9
    movaps 96(%rsp), %xmm10
    movaps 112(%rsp), %xmm11
    movaps 128(%rsp), %xmm12
    movaps 144(%rsp), %xmm13
    movaps 160(%rsp), %xmm14
    movaps 176(%rsp), %xmm15
    addq $200, %rsp
    popq %r15
    popq %r14
    popq %r13
    popq %r12
    popq %rdi
    popq %rsi
    popq %rbx
    popq %rbp
    ret
    .seh_endproc
)");

std::optional<u32> guardedCall(void (*function)(void*), void* argument) noexcept {
  keepStack();
  const FloatingPointMode mode;
  const u64 result = corvixCallGuarded(function, argument);
  if (result) asm volatile("fninit");  // registers that were in use would stay so
  mode.restore();
  if (!result) return std::nullopt;
  const u32 code = static_cast<u32>(result);
  if (code == EXCEPTION_STACK_OVERFLOW) guardStackAgain();
  return code;
}

}  // namespace corvix
