// Ref<T>: holds one reference on a counted object seen as a T. Two doors, by name: `adopt` takes over the
// reference that a creator hands out, `share` adds one of its own. T may be any interface of the object.
#pragma once

#include "core/baselib/objects/SmartObject.h"

#include <type_traits>
#include <utility>

namespace corvix {

template <class T>
class Ref {
 public:
  Ref() noexcept = default;
  Ref(std::nullptr_t) noexcept {}
  Ref(const Ref& other) : Ref(share(other.object_)) {}
  Ref(Ref&& other) noexcept : object_(other.detach()) {}
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ref(Ref<U> other) noexcept : object_(other.detach()) {}
  ~Ref() { reset(); }

  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  [[nodiscard]] static Ref adopt(T* object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }

  [[nodiscard]] static Ref share(T* object) {
    if (object) counted(object)->addRef();
    return adopt(object);
  }

  T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  // Gives the reference to the caller.
  [[nodiscard]] T* detach() noexcept { return std::exchange(object_, nullptr); }

  void reset() {
    if (T* object = detach()) counted(object)->release();
  }

  // The same object as another of its interfaces, with a reference of its own; empty if it has none such.
  template <class U>
  [[nodiscard]] Ref<U> as() const {
    return Ref<U>::share(query<U>(object_));
  }

  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.object_ == b.object_; }
  friend bool operator!=(const Ref& a, const Ref& b) noexcept { return a.object_ != b.object_; }

 private:
  static IBSmartObject* counted(T* object) {
    if constexpr (std::is_base_of_v<IBSmartObject, T>) {
      return object;
    } else {
      return query<IBSmartObject>(object);
    }
  }

  T* object_ = nullptr;
};

// A new object, owned by what is returned.
template <class T, class... Arguments>
[[nodiscard]] Ref<T> make(Arguments&&... arguments) {
  return Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

}  // namespace corvix
