// The modes of both floating-point units of x86. What a module leaves there would be the program's: other roundings,
// and exceptions where it expects none.
#pragma once

namespace corvix {

class FloatingPointMode {
 public:
  FloatingPointMode() noexcept { asm volatile("stmxcsr %0\n\tfnstcw %1" : "=m"(vector_), "=m"(stack_)); }
  void restore() const noexcept {
    constexpr unsigned kHappened = 0x3F;  // belongs to nobody
    const FloatingPointMode now;
    if ((((now.vector_ ^ vector_) & ~kHappened) | (now.stack_ ^ stack_)) == 0) return;
    const unsigned vector = vector_ & ~kHappened;
    asm volatile("ldmxcsr %0\n\tfnclex\n\tfldcw %1" : : "m"(vector), "m"(stack_));
  }

 private:
  unsigned vector_;
  unsigned short stack_;
};

}  // namespace corvix
