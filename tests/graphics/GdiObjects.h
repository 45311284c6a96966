// Counting and using up the objects of GDI that a process may have.
#pragma once

#include <vector>

#include <windows.h>

namespace corvix::testing_support {

inline std::vector<HBRUSH> takeAllBrushes() {
  std::vector<HBRUSH> brushes;
  brushes.reserve(70000);
  // Each of its own: the system may share equal ones.
  while (HBRUSH const brush = CreateSolidBrush(static_cast<COLORREF>(brushes.size()))) brushes.push_back(brush);
  return brushes;
}

// How many objects this process can still make.
inline int freeGdiObjects() {
  const std::vector<HBRUSH> brushes = takeAllBrushes();
  for (HBRUSH const brush : brushes) DeleteObject(brush);
  return static_cast<int>(brushes.size());
}

class GdiExhaustion {
 public:
  GdiExhaustion() : brushes_(takeAllBrushes()) {}
  ~GdiExhaustion() {
    for (HBRUSH const brush : brushes_) DeleteObject(brush);
  }
  GdiExhaustion(const GdiExhaustion&) = delete;
  GdiExhaustion& operator=(const GdiExhaustion&) = delete;

 private:
  std::vector<HBRUSH> brushes_;
};

}  // namespace corvix::testing_support
