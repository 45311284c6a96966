// The attributes of one element of a descriptor.
#pragma once

#include "core/baselib/text/WideString.h"
#include "core/xml/XmlNode.h"

#include <vector>

namespace corvix {

// Letters of the alphabet only.
bool equalInAnyCase(std::wstring_view a, std::wstring_view b) noexcept;

class Attributes {
 public:
  struct Attribute {
    WideString name;
    WideString value;
  };

  Attributes() = default;
  explicit Attributes(const XMLNodeNode& element);

  // Null when there is none; when a name stands twice, the first. Letter case counts in `find` only.
  const wchar_t* find(std::wstring_view name) const noexcept;
  const wchar_t* findAnyCase(std::wstring_view name) const noexcept;

  void add(WideString name, WideString value) { all_.push_back({std::move(name), std::move(value)}); }

  // In document order.
  const std::vector<Attribute>& all() const noexcept { return all_; }

 private:
  std::vector<Attribute> all_;
};

}  // namespace corvix
