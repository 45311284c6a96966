#include "core/baselib/objects/GlobalData.h"

#include "core/baselib/objects/GlobalData_p.h"
#include "core/baselib/system/CriticalSection.h"
#include "core/baselib/system/ForeignCall_p.h"
#include "core/baselib/system/Log.h"
#include "core/baselib/system/ProcessEnd_p.h"
#include "core/baselib/text/NameTable_p.h"

#include <atomic>

namespace corvix {

namespace {

struct Item {
  void* value;
  BGlobalData::Destructor destructor;

  void destroy() const noexcept {
    const void* const code = codeOf(destructor);
    if (!value || !destructor || !isCode(code)) return;
    callForeign(code, L"a destructor of global data", [this] { destructor(value); });
  }
};

// How often destroyAll looks for values that destructors have set meanwhile.
constexpr int kDestroyPasses = 8;

// A key is an identifier's text with the name right behind it, and hashed as that. The table stores the four words in
// the text's place: an identifier counts by its words. Should an object's text say others (a text is kept when its
// object is made a second time), that text is not looked at. The hash of the text is cached for the identifiers used
// last.
class Key {
 public:
  Key(const stype_info& owner, const char* name) noexcept
      : owner_(owner.words()), name_(name ? name : ""), nameLength_(std::strlen(name_)) {
    hash_ = text::stringHash(name_, nameLength_, ownerHash(owner), stype_info::kTextLength);
  }

  u32 hash() const noexcept { return hash_; }
  u32 length() const noexcept { return static_cast<u32>(sizeof owner_ + nameLength_); }

  bool is(const char* key) const noexcept {
    return std::memcmp(key, &owner_, sizeof owner_) == 0 && std::memcmp(key + sizeof owner_, name_, nameLength_) == 0;
  }

  void write(char* key) const noexcept {
    std::memcpy(key, &owner_, sizeof owner_);
    std::memcpy(key + sizeof owner_, name_, nameLength_);
  }

 private:
  struct KnownOwner {
    ClassWords words;
    u32 hash;
  };

  static u32 ownerHash(const stype_info& owner) noexcept {
    static KnownOwner known[64];  // guarded by the registry's lock
    KnownOwner& slot = known[owner.words().word1 & 63];
    if (slot.words != owner.words() || !slot.hash) {
      slot = {owner.words(), text::stringHash(PlainIdentifier(owner.words()).text(), stype_info::kTextLength)};
    }
    return slot.hash;
  }

  ClassWords owner_;
  const char* name_;
  std::size_t nameLength_;
  u32 hash_;
};

struct Registry {
  SCriticalSection section;
  text::NameTable<char, Item> items;

  Item* find(const Key& key) const noexcept {
    return items.find(key.hash(), key.length(), [&key](const char* other) { return key.is(other); });
  }

  void add(const Key& key, Item item) {
    items.add(key.hash(), key.length(), item, [&key](char* to) { key.write(to); });
  }

  void changed() noexcept {
    std::atomic<u32>& count = globalDataChangeCount;
    if (count.fetch_add(1, std::memory_order_acq_rel) + 1 == 0) count.fetch_add(1, std::memory_order_acq_rel);
  }
};

// Lives until the process ends: objects that go late still look here for their listeners.
Registry& registry() noexcept {
  alignas(Registry) static unsigned char storage[sizeof(Registry)];
  static Registry* const made = new (storage) Registry;
  return *made;
}

}  // namespace

constinit std::atomic<u32> globalDataChangeCount{1};

u32 globalDataBuckets() noexcept { return registry().items.bucketCount(); }

void* BGlobalData::getItem(const stype_info& owner, const char* name) noexcept {
  Registry& all = registry();
  SCriticalSection::Lock lock(all.section);
  const Key key(owner, name);
  const Item* const item = all.find(key);
  return item ? item->value : nullptr;
}

void BGlobalData::setItem(const stype_info& owner, const char* name, void* value, Destructor destructor) {
  Registry& all = registry();
  SCriticalSection::Lock lock(all.section);
  const Key key(owner, name);
  Item* item = all.find(key);
  if (item && item->value && item->destructor) {
    Item(*item).destroy();
    // The destructor may have called back: what it did to this very entry is overwritten, and if it
    // emptied the registry the value is entered anew.
    item = all.find(key);
  }
  if (item) {
    *item = {value, destructor};
  } else {
    all.add(key, {value, destructor});
  }
  all.changed();
}

void BGlobalData::destroyAll() {
  Registry& all = registry();
  SCriticalSection::Lock lock(all.section);
  if (all.items.isWalked()) return;  // called by a destructor: the walk under way does the work
  // A destructor may set values; those get their destructors in a further pass.
  bool found = true;
  for (int pass = 0; found && pass < kDestroyPasses; ++pass) {
    found = false;
    all.items.forEach([&found](std::string_view, Item& item) {
      if (!item.value || !item.destructor) return;
      found = true;
      const Item done = item;
      done.destroy();
      if (item.value == done.value && item.destructor == done.destructor) item = {nullptr, nullptr};
    });
  }
  all.items.clear();
  all.changed();
}

void endGlobalData() noexcept {
  SCriticalSection& section = registry().section;
  if (!isProcessEnding()) {
    BGlobalData::destroyAll();
  } else if (section.tryEnter()) {
    BGlobalData::destroyAll();
    section.leave();
  } else {
    sWriteLog(L"Global data is left as it is: a thread that the end of the process has stopped has its lock.\n");
  }
}

}  // namespace corvix
