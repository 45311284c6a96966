// OwningHandle: owns one thing of the system. A policy says how it is released; each wrapper is one alias
// line in the header of its system library.
#pragma once

#include <utility>

namespace corvix {

// What most policies begin with: a handle type that is null when there is none. The rest is `close`.
template <class Type>
struct NullIsNone {
  using Handle = Type;
  static Handle none() noexcept { return nullptr; }
};

// Policy: `using Handle`, `static constexpr/inline Handle none()`, `static void close(Handle)`.
template <class Policy>
class OwningHandle {
 public:
  using Handle = typename Policy::Handle;

  OwningHandle() noexcept = default;
  explicit OwningHandle(Handle handle) noexcept : handle_(handle) {}
  OwningHandle(OwningHandle&& other) noexcept : handle_(other.release()) {}
  OwningHandle& operator=(OwningHandle&& other) noexcept {
    reset(other.release());
    return *this;
  }
  ~OwningHandle() { reset(); }

  Handle get() const noexcept { return handle_; }
  explicit operator bool() const noexcept { return handle_ != Policy::none(); }

  // The caller closes it from now on.
  [[nodiscard]] Handle release() noexcept { return std::exchange(handle_, Policy::none()); }

  void reset(Handle handle = Policy::none()) noexcept {
    const Handle old = std::exchange(handle_, handle);
    if (old != Policy::none()) Policy::close(old);
  }

  // For functions that give a handle through a pointer.
  [[nodiscard]] Handle* put() noexcept {
    reset();
    return &handle_;
  }

 private:
  Handle handle_ = Policy::none();
};

}  // namespace corvix
