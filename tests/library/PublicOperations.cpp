// Memory, objects, texts, the log and settings; and all lists together.
#include "tests/library/PublicOperations.h"

#include "core/baselib/memory/AutoRealizePool.h"
#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/memory/SizeClassMemoryPool.h"
#include "core/baselib/memory/SystemMemoryPool.h"
#include "core/baselib/objects/GlobalData.h"
#include "core/baselib/objects/Ref.h"
#include "core/baselib/system/CriticalSection.h"
#include "core/baselib/system/Exception.h"
#include "core/baselib/system/Log.h"
#include "core/baselib/system/Log_p.h"
#include "core/baselib/system/RegistryKey_p.h"
#include "core/baselib/text/NameTable_p.h"
#include "core/baselib/text/NumberText.h"
#include "core/baselib/threads/Thread.h"
#include "core/baselib/threads/TimerTable.h"
#include "core/settings/BSettings_p.h"
#include "core/settings/SettingsRegistry_p.h"
#include "shell/modules/ModuleDescriptor_p.h"
#include "tests/library/SweptDescriptor.h"

#include <cstring>
#include <iterator>
#include <memory>
#include <string>

namespace corvix::testing_support {
namespace {

class Quiet : public BHibernatable, public IDestroyListener {
  CORVIX_IDENTITY(Quiet, 0x95E3C07D, 0x4AB1642F, 0x8D20F9B6, 0x37C85E1A, BHibernatable, IDestroyListener)

 public:
  bool hibernate(bool) override { return false; }
  int onDestroy(IBRTTISupport*) override { return notify::kGoOn; }
};

class Idle : public BThread {
  CORVIX_IDENTITY(Idle, 0xB08D5E72, 0x4F36A1C9, 0x92E7403B, 0x6C51D8AF, BThread)

 public:
  Idle() : BThread(L"idle") {}
  void run() override {}
};

// Null with the lock held once more is the pools' way to say no; anything else must be a block of that size.
void* tryAlloc(BMemoryPool& from, u32 size) {
  void* const block = from.alloc(size);
  EXPECT_EQ(allocCSProc().heldCount(), block ? 0u : 1u);
  if (block) std::memset(block, 0xCD, size);
  if (!block) allocCSProc().leave();
  return block;
}

void useFixed(BMemoryPool& fixed, u32 size) {
  void* blocks[20];
  for (void*& block : blocks) block = tryAlloc(fixed, size);
  for (void* block : blocks) fixed.free(block);
  fixed.hibernate(true);
}

void useAnySize(BMemoryPool& pool) {
  EXPECT_NE(pool.poolKind(), pool::kFixed);
  static_cast<void>(pool.accepts(pool::kNotFixed, 0));
  if (void* const array = pool.allocArray(20, 30)) {
    EXPECT_GE(pool.blockSize(array), 600u);
    pool.free(array);
  } else {
    allocCSProc().leave();
  }
  void* block = tryAlloc(pool, 8);
  if (block) std::memcpy(block, "content", 8);
  for (u32 size : {50u, 1000u, 5000u, 9000u}) {
    void* const larger = block ? pool.realloc(block, size) : nullptr;
    EXPECT_EQ(allocCSProc().heldCount(), 0u);
    if (!larger) continue;
    EXPECT_STREQ(static_cast<char*>(larger), "content");
    block = larger;
  }
  pool.free(block);
  pool.hibernate(true);
}

void useRequested(u32 flags, u32 size) {
  const auto pool = Ref<BMemoryPool>::adopt(BMemoryManager::getPool(flags, size));
  if (!pool) return;
  if (flags & pool::kFixedSize) {
    useFixed(*pool, size);
  } else {
    useAnySize(*pool);
  }
}

void useListeners() {
  Quiet guests[12];
  BNotifySender sender;
  u32 added = 0;
  const auto isWhole = [&] { return sender.listenerCount() == added; };
  for (int round = 0; round < 4; ++round) {
    for (Quiet& guest : guests) {
      tryOrLook([&] { sender.addListener(static_cast<IDestroyListener*>(&guest), (added * 7) % 5); }, isWhole);
      ++added;
    }
  }
  u32 told = 0;
  broadcastTo<IDestroyListener>(sender, [&](IDestroyListener& listener) {
    sender.removeListener(&listener);
    ++told;
    return notify::kGoOn;
  });
  EXPECT_EQ(told, 12u);
  EXPECT_EQ(sender.listenerCount(), added - told);
}

void useNameTable() {
  text::NameTable<char, int> table;
  u32 added = 0;
  char names[100][3];
  const auto isWhole = [&] {
    for (u32 i = 0; i < added; ++i) {
      if (!table.find({names[i], 3})) return false;
    }
    return table.size() == added;
  };
  for (u32 i = 0; i < 100; ++i) {
    names[i][0] = 'n';
    names[i][1] = static_cast<char>('A' + i / 10);
    names[i][2] = static_cast<char>('0' + i % 10);
    tryOrLook([&] { table.add({names[i], 3}, 5); }, isWhole);
    ++added;
  }
  table.forEach([](std::string_view, int&) {});
  EXPECT_TRUE(isWhole());
}

void useTexts() {
  WideString before(kLongText);
  WideString copy = before;
  tryOrLook(
      [&] { copy.assign(L"another text of more letters than there is room for where the first one stood, by far"); },
      [&] { return copy == before; });
  Variant value(kLongText);
  const Variant other = value;
  static_cast<void>(value.toText());
  static_cast<void>(Variant(0.1).toText());
  EXPECT_EQ(Variant(kLongText).toInteger(), 0);
  wchar_t number[text::kFloatLength + 1];
  EXPECT_EQ(text::readFloat({number, text::writeFloat(2.5, number)}), 2.5);
  EXPECT_TRUE(text::readInteger(L"12") == 12 && text::scanInteger(L"12").low32 == 12 && parseClassWords(L"1,2,3,4", 7));
  EXPECT_EQ(other.text(), kLongText);
}

void readLargeBlock() {
  Block block;
  block.element(L"root", 200);
  for (int i = 0; i < 200; ++i) {
    block.element(L"child", 1);
    block.attribute(std::to_wstring(i), kLongText);
  }
  const auto root = Ref<XMLNode>::adopt(readXmlbin(block.bytes.data(), static_cast<u32>(block.bytes.size())));
  EXPECT_EQ(root ? static_cast<XMLNodeNode&>(*root).childCount() : 200, 200);
}

void buildTree() {
  const auto root = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"root");
  i32 added = 0;
  for (int i = 0; i < 20; ++i) {
    const auto child = make<XMLNodeParam>(root.get(), XmlNodeType::Attribute, kLongText, L"value");
    tryOrLook([&] { root->appendChild(child.get()); }, [&] { return root->childCount() == added; });
    ++added;
  }
  AttributeTable table;
  AttributeTable::Builder builder(table);
  for (int i = 0; i < 20; ++i) builder.add(kLongText, std::to_wstring(i));
  const Attributes attributes = builder.endElement();
  builder.finish();
  EXPECT_EQ(attributes.count(), 20u);
  const auto text = make<XMLNodeText>(nullptr, XmlNodeType::Text, kLongText);
  const auto comment = make<XMLNodeComment>(nullptr, XmlNodeType::Comment, kLongText);
  root->insertChild(text.get(), 3);
  root->appendChild(comment.get());
  const auto first = Ref<XMLNode>::adopt(root->removeChild(0));
  EXPECT_EQ(root->childCount(), 21);
}

// Every group that is listed has items, every item that is listed has a value.
bool hasValuesOnly(const BSettings& settings) {
  for (i32 group = 0; group < settings.groupCount(); ++group) {
    const wchar_t* const name = settings.groupAt(group);
    if (settings.itemCount(name) == 0) return false;
    for (i32 item = 0; item < settings.itemCount(name); ++item) {
      Variant value;
      if (!settings.getValue(name, settings.itemAt(name, item), value) &&
          !settings.getDefault(name, settings.itemAt(name, item), value))
        return false;
    }
  }
  return true;
}

class Watcher : public BSmartObject, public ISettingListener, public ISettingsListener {
  CORVIX_IDENTITY(Watcher, 0x60B2D971, 0x4C18E3A5, 0x97F0648D, 0x2B5CA1E3, BSmartObject, ISettingListener,
                  ISettingsListener)

 public:
  int onStartChanges(IBSettings&) override { return notify::kGoOn; }
  int onFinishChanges(IBSettings&) override { return notify::kGoOn; }
  int onSettingChanged(IBSettings&, const wchar_t*, const wchar_t*) override { return notify::kGoOn; }
};

void useSettings() {
  const auto settings = make<BSettings>();
  Watcher watcher;
  const auto listener = static_cast<ISettingsListener*>(&watcher);
  const Listens ownStart(settings->startSender(), listener), ownFinish(settings->finishSender(), listener);
  const Listens allStart(settingsStartChanges(), listener), allFinish(settingsFinishChanges(), listener);
  const wchar_t* const names[] = {L"one", L"two", L"three", L"four", L"five"};
  tryOrLook(
      [&] {
        for (const wchar_t* group : names) {
          for (const wchar_t* item : names) {
            settings->setAttribute(group, item, L"comment", kLongText);
            settings->watch(group, item, &watcher, 0);
            settings->setDefault(group, item, Variant(kLongText));
            settings->setValue(group, item, Variant(kLongText));
            settings->setValue(group, item, Variant(5));
            settings->unwatch(group, item, &watcher);
          }
        }
      },
      [&] { return hasValuesOnly(*settings); });
  settings->onStartChanges();
  settings->onFinishChanges();
  WideString comment;
  if (settings->getAttribute(L"one", L"two", L"comment", comment)) {
    EXPECT_EQ(comment, kLongText);
  }
}

void useSettingsRegistry() {
  const auto root = readDescriptor();
  if (!root) return;
  const auto settings = make<BSettings>();
  SettingsRegistry registry;
  const auto* const plugin = static_cast<XMLNodeNode*>(static_cast<XMLNodeNode&>(*root).childAt(0));
  ModuleDescriptor descriptor;
  descriptor.read(*plugin);
  registry.registerSetting(descriptor.settings().front(), *settings);
  settings->setValue(L"Swept", L"One", Variant(6));
  registry.saveAll(*settings);
}

void useHeap() {
  void* block = _smalloc(100);
  if (void* const larger = block ? _srealloc(block, 5000) : nullptr) block = larger;
  if (block) {
    EXPECT_TRUE(smsize(block) >= 100 && _smsize(block) >= 100 && __smsize(block) >= 100);
  }
  _sfree(block);
  block = __smalloc(100, 0, "file", 1);
  if (void* const larger = block ? __srealloc(block, 200, 0, "file", 2) : nullptr) block = larger;
  __sfree(block, 0);
}

class Small : public BRemoteRemovable {
  CORVIX_IDENTITY(Small, 0x4B19E7D0, 0x47A3526C, 0x8F60C31B, 0xA5D2974E, BRemoteRemovable)
};

void useObjects() {
  auto* const small = new Small;
  static_cast<IBRemoteRemovable*>(small)->release();
  const auto counted = make<Quiet>();
  Quiet told;
  const Listens everything(destroyNotifications(), static_cast<IDestroyListener*>(&told));
  IBSmartObject* const object = counted.get();
  object->addRef();
  EXPECT_EQ(object->refCount(), 1u);
  object->release();
  counted->notifyDestroy();
}

void useGlobalData() {
  static int value = 0;
  const auto name = std::make_unique<char[]>(10);
  std::strcpy(name.get(), "swept");
  BGlobalData::setItem(Quiet::classInfo(), name.get(), &value, nullptr);
  EXPECT_EQ(BGlobalData::getItem(Quiet::classInfo(), name.get()), &value);
  BGlobalData::setItem(Quiet::classInfo(), name.get(), nullptr, nullptr);
}

void useErrors() {
  const SException error(L"file.cpp", 12, kLongText);
  EXPECT_EQ(error.sourceLine(), 12);
  _sfree(error.getMessage());
  EXPECT_EQ(callForeign(codeOf(&useHeap), L"test", []() -> int { throw 5; }), 0);
}

void useLog() {
  const OwnFile log(L"corvix-swept.exe.log");
  const std::wstring executable(log.path(), std::wcslen(log.path()) - 4);
  const RegistryKey key = RegistryKey::create(HKEY_CURRENT_USER, registryPathOf(executable), KEY_ALL_ACCESS);
  if (key) key.setNumber(L"WriteLog", 1);
  struct Closes {
    ~Closes() { closeLog(); }
  } closes;
  openLog(executable);
  sWriteLog("%s%900d\n", "entry", 1);
  sWriteLog(L"%s%900d\n", L"entry", 1);
  callForeign(codeOf(&useHeap), L"test", []() -> int { throw 5; });
  switchLog(true);
  static_cast<void>(logPath());
  static_cast<void>(isLogSwitchedOn());
  switchLog(false);
}

const PublicOperation kOperations[] = {
    {"system pool", [] { useAnySize(*BMemoryManager::getSystemPool()); }},
    {"new system pool", [] { useRequested(pool::kNeverShared, 0); }},
    {"fixed pool", [] { useRequested(pool::kNeverShared | pool::kFixedSize, 40); }},
    {"smallest fixed pool", [] { useRequested(pool::kNeverShared | pool::kFixedSize, 4); }},
    {"size classes", [] { useRequested(pool::kNeverShared | pool::kSizeClasses, 0); }},
    {"probe",
     [] {
       BMemoryPool& system = *BMemoryManager::getSystemPool();
       for (int i = 0; i < 3; ++i) system.free(tryAlloc(system, 0x40000));
     }},
    {"hibernatable",
     [] {
       const auto quiet = make<Quiet>();
       BMemoryManager::drainMemory(0);
       BMemoryManager::hibernatePools(true);
       BMemoryManager::scheduleHibernation();
       BMemoryManager::performScheduled();
     }},
    {"hibernate buffer", [] { BMemoryManager::reserveHibernateBuffer(1000); }},
    {"timers",
     [] {
       i32 timers[17];
       for (i32& timer : timers)
         timer = timerData.start(
             60000, [](i32, u32) {}, 0);
       for (i32 timer : timers) timerData.stop(timer);
     }},
    {"delayed release",
     [] {
       auto quiet = make<Quiet>();
       if (BAutoRealizePool::add(quiet.get(), 5)) static_cast<void>(quiet.detach());
       BAutoRealizePool::Clear();
     }},
    {"thread",
     [] {
       const auto idle = make<Idle>();
       idle->start();
     }},
    {"heap", useHeap},
    {"objects", useObjects},
    {"global data", useGlobalData},
    {"errors", useErrors},
    {"log", useLog},
    {"listeners", useListeners},
    {"name table", useNameTable},
    {"texts", useTexts},
    {"descriptor block", readLargeBlock},
    {"tree of nodes", buildTree},
    {"settings", useSettings},
    {"settings in the registry", useSettingsRegistry},
};

}  // namespace

std::span<const PublicOperation> baseOperations() { return kOperations; }

std::vector<PublicOperation> publicOperations() {
  std::vector<PublicOperation> all;
  for (const auto rows : {baseOperations(), streamOperations(), graphicsOperations(), shellOperations()}) {
    all.insert(all.end(), rows.begin(), rows.end());
  }
  return all;
}

}  // namespace corvix::testing_support
