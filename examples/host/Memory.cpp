// What the memory manager keeps track of, and what it gives back when it is asked.
#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/memory/SizeClassMemoryPool.h"
#include "core/baselib/objects/Ref.h"
#include "examples/host/Command.h"
#include "examples/host/Console.h"

namespace host {

using namespace corvix;

namespace {

// A picture that can be drawn again: what a program would let go when memory is short.
class PreviewCache : public BHibernatable {
  CORVIX_IDENTITY(PreviewCache, 0xE1907A4C, 0x4C58B3D2, 0x9F63D1A7, 0x52B80E6F, BHibernatable)

 public:
  PreviewCache() : picture_(_smalloc(kPictureBytes)) {}
  ~PreviewCache() override { _sfree(picture_); }

  bool hibernate(bool) override {
    const bool isHeld = picture_ != nullptr;
    _sfree(picture_);
    picture_ = nullptr;
    return isHeld;
  }
  u32 heldBytes() const noexcept { return smsize(picture_); }

 private:
  static constexpr u32 kPictureBytes = 1024 * 1024;

  void* picture_;
};

std::string number(u32 value) {
  std::string digits = std::to_string(value);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, 1, ',');
  return digits;
}

const char* kindName(i32 kind) {
  switch (kind) {
    case pool::kFixed:
      return "fixed";
    case pool::kSystem:
      return "system";
    case pool::kSizeClass:
      return "size classes";
    default:
      return "other";
  }
}

void addPool(BMemoryPool* memoryPool, void* table) {
  auto& rows = *static_cast<Table*>(table);
  if (const auto* const fixed = query<BFixedMemoryPool>(memoryPool)) {
    rows.add({kindName(fixed->poolKind()), number(fixed->blockBytes()), number(fixed->chunkCount()),
              number(fixed->handedOutBytes()), number(fixed->chunkCount() * fixed->chunkBytes())});
  } else {
    rows.add({kindName(memoryPool->poolKind()), "any", "-", "-", "-"});
  }
}

void addHibernatable(BHibernatable* object, void* table) {
  const auto* const cache = query<PreviewCache>(object);
  static_cast<Table*>(table)->add({shown(object->typeInfo().classNameW()), cache ? number(cache->heldBytes()) : "-"});
}

void show(const char* when) {
  Table pools({"Pool", "Block size", "Chunks", "Bytes handed out", "Bytes held"});
  BMemoryManager::visitPools(addPool, &pools);
  Table hibernatables({"Hibernatable", "Bytes held"});
  BMemoryManager::visitHibernatables(addHibernatable, &hibernatables);
  std::printf("%s, newest first\n", when);
  pools.print();
  std::printf("\n");
  hibernatables.print();
}

const char* answer(bool released) { return released ? "memory was given back" : "there was nothing to give back"; }

int showMemory() {
  // A document that was opened and, but for its last lines, closed again.
  const auto texts = Ref<BMemoryPool>::adopt(BMemoryManager::getPool(pool::kSizeClasses, 0));
  const auto records = Ref<BMemoryPool>::adopt(BMemoryManager::getPool(pool::kFixedSize, 48));
  if (!texts || !records) {
    std::fprintf(stderr, "corvix-host: there is no memory for another pool.\n");
    return 1;
  }
  const auto cache = make<PreviewCache>();
  std::vector<void*> lines, entries;
  for (u32 i = 0; i < 2000; ++i) {
    lines.push_back(texts->alloc(10 + i % 120));
    entries.push_back(records->alloc(48));
  }
  while (lines.size() > 40) {
    texts->free(lines.back());
    records->free(entries.back());
    lines.pop_back();
    entries.pop_back();
  }

  show("Memory before");
  std::printf("\nhibernatePools: %s\n\n", answer(BMemoryManager::hibernatePools(true)));
  show("Memory after");
  std::printf("\ndrainMemory: %s\n", answer(BMemoryManager::drainMemory(0)));
  std::printf("  PreviewCache now holds %s bytes\n", number(cache->heldBytes()).c_str());

  for (void* line : lines) texts->free(line);
  for (void* entry : entries) records->free(entry);
  return 0;
}

}  // namespace

const Command memoryCommand("memory", "Show the memory pools and hibernatables before and after they give memory back",
                            {}, [](Host& host, const Texts&) {
                              host.shell();  // is asked when memory runs out
                              return showMemory();
                            });

}  // namespace host
