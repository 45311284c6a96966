// IUserAlert: how the modules' side tells the user of a fault. The shell fills it.
#pragma once

#include <string>

namespace corvix {

class IUserAlert {
 public:
  // One button, OK. Returns when the user has seen it, or at once in a program without a user.
  virtual void show(const std::wstring& text, const wchar_t* caption) = 0;

 protected:
  ~IUserAlert() = default;
};

}  // namespace corvix
