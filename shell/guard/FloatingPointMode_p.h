// The modes of both floating-point units of x86. What a module leaves there would be the program's: other roundings,
// and exceptions where it expects none.
#pragma once

namespace corvix {

class FloatingPointMode {
 public:
  FloatingPointMode() noexcept : vector_(currentVector()), stack_(currentStack()) {}
  void restore() const noexcept {
    if (currentVector() != vector_) asm volatile("ldmxcsr %0" : : "m"(vector_));
    if (currentStack() != stack_) asm volatile("fnclex\n\tfldcw %0" : : "m"(stack_));
  }

 private:
  static unsigned currentVector() noexcept {
    constexpr unsigned kHappened = 0x3F;  // belongs to nobody
    unsigned mode;
    asm volatile("stmxcsr %0" : "=m"(mode));
    return mode & ~kHappened;
  }
  static unsigned short currentStack() noexcept {
    unsigned short mode;
    asm volatile("fnstcw %0" : "=m"(mode));
    return mode;
  }
  unsigned vector_;
  unsigned short stack_;
};

}  // namespace corvix
