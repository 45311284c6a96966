// The formats that modules declare ("DocFormat."), by what their descriptors say: none of their code is loaded for it.
#pragma once

#include "core/baselib/objects/Collection.h"
#include "core/baselib/objects/Ref.h"
#include "shell/PluginManager.h"
#include "shell/documents/DocFormat.h"

#include <string_view>
#include <vector>

namespace corvix {

class KReport;

struct DeclaredFormat {
  IPluginInterface* entry;
  i32 order;
  bool reads;
  bool writes;

  const wchar_t* name() const noexcept { return entry->name(); }
  std::wstring_view textForUser() const noexcept;
  std::wstring_view pattern() const noexcept;
};

// How much the beginning of a file tells of being in that format.
enum class Likelihood : i32 {
  None,     // it begins otherwise, and is called otherwise
  Rest,     // nothing is known of how such files begin
  Pattern,  // it is called so
  Magic,    // and so many more as the beginning is long: it begins so
};

class FormatList {
 public:
  static constexpr u32 kLongestMagic = 64;  // bytes

  // As they stand now; good as long as no module is registered.
  explicit FormatList(IPluginManager& manager);

  const std::vector<DeclaredFormat>& all() const noexcept { return formats_; }
  const DeclaredFormat* find(std::wstring_view name) const noexcept;

  // The first that writes files of that name; null if none does.
  const DeclaredFormat* writerOf(std::wstring_view fileName) const noexcept;

  // Objects that offer IFileFilter, owned by the caller.
  IBCollection* filters(bool forWriting) const;

 private:
  std::vector<DeclaredFormat> formats_;
};

// Null, and a line in the report, when it cannot be made or is none.
Ref<IDocFormat> makeFormat(const DeclaredFormat& format, KReport& report);

// A Likelihood, larger for a longer beginning.
i32 likelihoodOf(const DeclaredFormat& format, const u8* beginning, u32 size, std::wstring_view fileName) noexcept;

}  // namespace corvix
