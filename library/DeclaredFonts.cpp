#include "library/DeclaredFonts_p.h"

#include "shell/Shell.h"
#include "shell/modules/KClassFactoryLocal_p.h"

#include <cwchar>
#include <vector>

namespace corvix {

namespace {

constexpr std::wstring_view kFamily = L"FontCreator.";

class DeclaredFonts final : public IDeclaredFontCreators {
 public:
  i32 count() override {
    collect();
    return static_cast<i32>(rows_.size());
  }

  IFMFontCreator* creatorFor(i32 index, const FontRequest* request) override {
    Row& row = rows_[static_cast<std::size_t>(index)];
    if (row.needsProgram && (!request || !request->program)) return nullptr;
    if (!row.isMade) {
      row.isMade = true;
      row.creator = createdBy(*row.entry);
    }
    return row.creator.get();
  }

  void forget() noexcept override {
    rows_.clear();
    seen_ = 0;
  }

 private:
  struct Row {
    IPluginInterface* entry;
    i32 order;
    bool needsProgram;
    bool isMade = false;
    Ref<IFMFontCreator> creator;
  };

  // Modules may be added at any time, never taken away.
  void collect() {
    IPluginManager& manager = *IShell::getInstance()->pluginManager();
    for (; seen_ < manager.interfaceCount(); ++seen_) {
      IPluginInterface* const entry = manager.interfaceAt(seen_);
      if (!std::wstring_view(entry->name()).starts_with(kFamily)) continue;
      const wchar_t* const needs = entry->attribute(L"Needs");
      Row row = {entry, interfaceOrder(*entry), needs && std::wcscmp(needs, L"program") == 0, false, {}};
      auto at = rows_.begin();
      while (at != rows_.end() && at->order <= row.order) ++at;
      rows_.insert(at, std::move(row));
    }
  }

  static Ref<IFMFontCreator> createdBy(IPluginInterface& entry) {
    const auto object = Ref<IBSmartObject>::adopt(entry.createObject());
    return object.as<IFMFontCreator>();
  }

  std::vector<Row> rows_;
  i32 seen_ = 0;
};

}  // namespace

void offerDeclaredFonts() noexcept {
  static DeclaredFonts fonts;
  setDeclaredFontCreators(&fonts);
}

}  // namespace corvix
