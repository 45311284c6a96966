// Pools and hibernatables, the newest first, and what they give back.
#include "plugins/inspector/Tab.h"

#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/memory/SizeClassMemoryPool.h"

namespace corvix::inspector {

namespace {

const wchar_t* kindName(i32 kind) {
  switch (kind) {
    case pool::kFixed:
      return L"fixed";
    case pool::kSystem:
      return L"system";
    case pool::kSizeClass:
      return L"size classes";
    default:
      return L"other";
  }
}

// Under the manager's lock.
void addPool(BMemoryPool* memoryPool, void* rows) {
  Row row = {kindName(memoryPool->poolKind()), L"any", L"", L"", L""};
  if (const auto* const fixed = query<BFixedMemoryPool>(memoryPool)) {
    std::size_t column = 1;
    for (const u32 number :
         {fixed->blockBytes(), fixed->chunkCount(), fixed->handedOutBytes(), fixed->chunkCount() * fixed->chunkBytes()})
      row[column++] = std::to_wstring(number);
  }
  static_cast<std::vector<Row>*>(rows)->push_back(std::move(row));
}

void addHibernatable(BHibernatable* object, void* rows) {
  static_cast<std::vector<Row>*>(rows)->push_back({object->typeInfo().classNameW()});
}

class MemoryTab : public Tab {
 public:
  void refresh() override {
    std::vector<Row> pools, hibernatables;
    BMemoryManager::visitPools(addPool, &pools);
    BMemoryManager::visitHibernatables(addHibernatable, &hibernatables);
    list_.show(pools);
    hibernatables_.show(hibernatables);
  }

  void command(int id, int) override {
    if (id != kPools && id != kAll) return;
    bool isGiven = false;
    if (!staysOpen(page(), [&] {
          isGiven = id == kPools ? BMemoryManager::hibernatePools(true) : BMemoryManager::hibernateHibers(true);
        }))
      return;
    say(isGiven ? L"Memory was given back." : L"There was nothing to give back.");
    refresh();
  }

 private:
  enum { kPools = 1, kAll };

  void make() override {
    list_.make(
        page(), kList,
        {{L"Pool", 100}, {L"Block size", 80}, {L"Chunks", 70}, {L"Bytes handed out", 120}, {L"Bytes held", 100}});
    hibernatables_.make(page(), kList + 1, {{L"Hibernatable", 230}});
    addButton(L"Shrink &pools", kPools, 110);
    addButton(L"&Hibernate objects", kAll, 130);
    addToRow(L"STATIC", L"", SS_NOPREFIX | SS_CENTERIMAGE, kSaid, 0);
  }

  void placeMain(RECT area) override {
    const LONG split = area.left + (area.right - area.left) * 2 / 3;
    Tab::placeMain({area.left, area.top, split, area.bottom});
    MoveWindow(hibernatables_.handle(), split, area.top, area.right - split, area.bottom - area.top, TRUE);
  }
  void adoptMore(const Look& look) override { hibernatables_.adopt(look); }

  List hibernatables_;
};

}  // namespace

std::unique_ptr<Tab> makeMemoryTab() { return std::make_unique<MemoryTab>(); }

}  // namespace corvix::inspector
