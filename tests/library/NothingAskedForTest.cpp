// The law of errors, over the whole public surface: null stands for nothing, an index outside a list for what is not
// there, a null buffer for no bytes. No such call crashes, throws or changes anything.
#include "core/baselib/memory/AutoRealizePool.h"
#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/memory/MemoryManager.h"
#include "core/baselib/streams/BufferedOutputStream.h"
#include "core/baselib/streams/FileInputStream.h"
#include "core/baselib/streams/FileOutputStream.h"
#include "core/baselib/streams/MemoryInputStream.h"
#include "core/baselib/streams/MemoryOutputStream.h"
#include "core/baselib/streams/TempStorage.h"
#include "core/baselib/system/Exception.h"
#include "core/baselib/system/Log.h"
#include "core/baselib/threads/TimerTable.h"
#include "core/suppliers/RegisteredStreams.h"
#include "core/suppliers/Supplier.h"
#include "core/suppliers/decoding/PackDecodeStream.h"
#include "core/suppliers/decoding/PackParams.h"
#include "core/xml/XmlbinReader.h"
#include "graphics/IAGDC.h"
#include "graphics/IAGDCCreator.h"
#include "graphics/fonts/FontFinder.h"
#include "graphics/text/Text.h"
#include "shell/GlobalEvent.h"
#include "shell/Locations.h"
#include "shell/ModuleResources.h"
#include "shell/ObjectWatch.h"
#include "shell/Plugin.h"
#include "shell/documents/BDocument.h"
#include "shell/documents/DocManager.h"
#include "shell/history/StateHistory.h"
#include "shell/history/StateList.h"
#include "shell/language/Translator.h"
#include "shell/menus/MenuManager.h"
#include "shell/services/Report.h"
#include "shell/services/Secretary.h"
#include "tests/support/OwnPlugin.h"

#include <gtest/gtest.h>

extern "C" corvix::BClassFactory* queryClassFactoryLocal();

namespace corvix {
namespace {

using testing_support::shell;

IPluginManager& manager() { return *shell().pluginManager(); }
IBSettings& settings() { return *shell().settings(); }
IPluginModule& own() { return *manager().moduleAt(0); }

struct Row {
  const char* call;
  bool (*isNothing)();
};

const Row kShellRows[] = {
    {"findByName", [] { return !manager().findByName(nullptr); }},
    {"createObject", [] { return !manager().createObject(nullptr); }},
    {"createObject of the factories",
     [] {
       const auto found = GetProcAddress(GetModuleHandleW(L"corvix.dll"), "queryClassFactoryLocal");
       const auto ofLibrary = reinterpret_cast<QueryClassFactory>(reinterpret_cast<void*>(found));
       return !ofLibrary()->createObject(nullptr, IShell::classInfo()) &&
              !queryClassFactoryLocal()->createObject(nullptr, IShell::classInfo());
     }},
    {"registerDescriptor", [] { return !manager().registerDescriptor(nullptr, nullptr); }},
    {"scanFolder", [] { return manager().scanFolder(nullptr) == 0 && manager().scanFolder(L"") == 0; }},
    {"loadModule",
     [] {
       const i32 count = manager().moduleCount();
       return !manager().loadModule(nullptr) && !manager().loadModule(L"") && manager().moduleCount() == count;
     }},
    {"moduleAt", [] { return !manager().moduleAt(-1) && !manager().moduleAt(manager().moduleCount()); }},
    {"interfaceAt", [] { return !manager().interfaceAt(-1) && !manager().interfaceAt(manager().interfaceCount()); }},
    {"attribute of a module", [] { return !own().attribute(nullptr); }},
    {"settingAttribute",
     [] {
       return !own().settingAttribute(-1, L"Item") && !own().settingAttribute(own().settingCount(), L"Item") &&
              !own().settingAttribute(0, nullptr);
     }},
    {"attribute of an interface", [] { return !manager().interfaceAt(0)->attribute(nullptr); }},
    {"runOnShellThread", [] { return !shell().runOnShellThread(nullptr, nullptr); }},
    {"processCommandLine", [] { return shell().processCommandLine(nullptr, 3) == 0; }},
    {"changeStatusText", [] { return shell().changeStatusText(0, nullptr) == notify::kGoOn; }},
    {"openDocument", [] { return shell().openDocument(nullptr, nullptr) == notify::kGoOn; }},
    {"messageBox", [] { return shell().messageBox(nullptr, nullptr, 0, 7) == 7; }},
    {"addAction", [] { return shell().actionManager()->addAction(nullptr), true; }},
    {"removeAction", [] { return shell().actionManager()->removeAction(nullptr), true; }},
    {"findAction", [] { return !shell().actionManager()->findAction(nullptr); }},
    {"processAction", [] { return shell().actionManager()->processAction(nullptr, nullptr) == notify::kGoOn; }},
    {"openLocation", [] { return !openLocation(manager(), nullptr); }},
    {"supplierNameOf", [] { return supplierNameOf(nullptr).view() == L"Supplier."; }},
    {"setLocation",
     [] {
       for (const wchar_t* name : {L"Supplier.file", L"Supplier.http", L"Supplier.istream"}) {
         const auto supplier = createObject<IBSupplier>(manager(), name);
         if (supplier->setLocation(nullptr) || supplier->open(supply::kRead, nullptr)) return false;
       }
       return true;
     }},
    {"registerStream", [] { return !registerStream(nullptr, nullptr) && !registerStream(L"", nullptr); }},
    {"getValue",
     [] {
       Variant value(5);
       return !settings().getValue(nullptr, nullptr, value) && value == Variant(5);
     }},
    {"names of settings",
     [] {
       return !settings().groupAt(-1) && !settings().groupAt(settings().groupCount()) &&
              settings().itemCount(nullptr) == 0 && !settings().itemAt(nullptr, 0) &&
              !settings().itemAt(L"Quality", -1) && !settings().itemAt(L"Quality", 99);
     }},
    {"watch",
     [] {
       settings().watch(L"Quality", L"SmartLines", nullptr, 0);
       settings().unwatch(L"Quality", L"SmartLines", nullptr);
       return true;
     }},
    {"createFont",
     [] {
       const auto fonts = createObject<IFMFontMachine>(manager(), L"IFMFontMachine.Instance");
       fonts->addCreator(nullptr);
       const auto chooser = query<IFMFontChooser>(fonts.get());
       return Ref<IFMFont>::adopt(fonts->createFont(nullptr)) && Ref<IFMFont>::adopt(chooser->createFontFor({})) &&
              Ref<IFMFont>::adopt(chooser->fontWithGlyph(0, nullptr)) && !chooser->removeCreator(nullptr);
     }},
    {"settings without a name",
     [] {
       WideString text(L"as before");
       settings().setValue(nullptr, nullptr, Variant(1));
       settings().setAttribute(nullptr, nullptr, nullptr, nullptr);
       settings().watch(nullptr, nullptr, nullptr, 0);
       return !settings().getAttribute(L"Quality", L"SmartLines", nullptr, text) && text.view() == L"as before";
     }},
    {"readResource", [] { return !query<IModuleResources>(&own())->readResource(nullptr); }},
    {"rowAt",
     [] {
       auto* const watch = query<IObjectWatch>(&manager());
       ObjectsLeft row;
       return !watch->rowAt(-1, row) && !watch->rowAt(watch->takeStock(), row);
     }},
    {"documents",
     [] {
       IDocManager& all = *shell().docManager();
       all.forgetRecent(nullptr);
       return !all.openDocument(nullptr) && !all.closeDocument(nullptr) && !all.newDocument(nullptr) &&
              !all.saveDocument(nullptr) && !all.saveDocumentAs(nullptr, nullptr, nullptr) && !all.documentAt(-1) &&
              !all.documentAt(all.documentCount()) && !all.recentAt(-1) && !all.recentAt(all.recentCount()) &&
              all.setActiveDocument(nullptr) && !all.activeDocument();
     }},
    {"steps",
     [] {
       IStateHistory& history = *shell().stateHistory();
       BDocument document;
       document.setPlace(nullptr, nullptr, nullptr, false);
       IStateList& steps = *history.listOf(&document);
       steps.begin(nullptr);
       const bool isAdded = steps.add(nullptr);
       steps.end();
       history.setActive(nullptr);
       history.forget(nullptr);
       return !isAdded && !steps.canGoBack() && steps.isAtSaved() && !history.listOf(nullptr) && !history.goBack();
     }},
    {"the language",
     [] {
       const auto translator = createObject<IBTranslator>(manager(), L"IBTranslator.Instance");
       KnownLanguage known{};
       return !*translator->translate(nullptr) && !*translator->translateIn(nullptr, nullptr) &&
              translator->setLanguage(nullptr) && !translator->knownAt(-1, known) &&
              !translator->knownAt(translator->takeStock(), known);
     }},
    {"menus",
     [] {
       const auto menus = createObject<IMenuManager>(manager(), L"IMenuManager.Instance");
       return !menus->menu(nullptr) && !menus->menuAt(-1) && !menus->menuAt(menus->menuCount()) &&
              whenHolds(nullptr, nullptr) && !whenHolds(L"x", nullptr);
     }},
    {"a report",
     [] {
       const auto object = Ref<IBSmartObject>::adopt(createReport());
       IBReport& report = *query<IBReport>(object.get());
       report.addLine(nullptr);
       return !report.lineAt(-1) && !report.lineAt(report.lineCount()) && reportText(report).empty();
     }},
    {"the secretary",
     [] {
       const auto secretary = createObject<IBSecretary>(manager(), L"IBSecretary.Instance");
       secretary->forget(nullptr);
       return !secretary->keyFor(nullptr, 1);
     }},
};

const Row kCoreRows[] = {
    {"getItem", [] { return !BGlobalData::getItem(IShell::classInfo(), nullptr); }},
    {"addListener",
     [] {
       BNotifySender sender;
       sender.removeListener(nullptr);
       sender.addListener(nullptr);
       return sender.listenerCount() == 0;
     }},
    {"broadcast",
     [] {
       BNotifySender sender;
       BSmartObject listener;
       sender.addListener(&listener);
       return sender.broadcast(nullptr, nullptr, nullptr) == notify::kGoOn;
     }},
    {"query through a class", [] { return !IShell::classInfo().query(nullptr, IShell::classInfo(), nullptr); }},
    {"query", [] { return !query<IShell>(static_cast<IBTransportable*>(nullptr)); }},
    {"Ref", [] { return !Ref<IShell>::share(nullptr) && !Ref<IShell>().as<IBSettings>(); }},
    {"parseClassWords", [] { return !parseClassWords(nullptr, 7); }},
    {"registerPool", [] { return !BMemoryManager::registerPool(nullptr) && !BMemoryManager::unregisterPool(nullptr); }},
    {"registerHibernatable",
     [] { return !BMemoryManager::registerHibernatable(nullptr) && !BMemoryManager::unregisterHibernatable(nullptr); }},
    {"visitors",
     [] {
       BMemoryManager::visitPools(nullptr, nullptr);
       BMemoryManager::visitHibernatables(nullptr, nullptr);
       return true;
     }},
    {"free",
     [] {
       for (const u32 flags : {pool::kFixedSize, pool::kSizeClasses, u32{0}})
         Ref<BMemoryPool>::adopt(BMemoryManager::getPool(flags | pool::kNeverShared, 16))->free(nullptr);
       _sfree(nullptr);
       return smsize(nullptr) == 0;
     }},
    {"delayed release", [] { return !BAutoRealizePool::add(nullptr, 0); }},
    {"timers",
     [] {
       timerData.stop(-1);
       timerData.stop(1000);
       const auto callback = [](i32, u32) {};
       return timerData.start(1, nullptr, 0) == TimerData::kNoTimer &&
              timerData.start(1, callback, 0, 1000) == TimerData::kNoTimer &&
              timerData.start(1, callback, 0, -2) == TimerData::kNoTimer;
     }},
    {"the log",
     [] {
       sWriteLog(static_cast<const char*>(nullptr));
       sWriteLog(static_cast<const wchar_t*>(nullptr));
       return true;
     }},
    {"SException", [] { return !SException(nullptr, 0, nullptr).sourceFile(); }},
    {"files", [] { return !make<BFileInputStream>()->open(nullptr) && !make<BFileOutputStream>()->open(nullptr); }},
    {"read",
     [] {
       BTempStorage file;
       BMemoryInputStream memory("abc", 3, BMemoryInputStream::Bytes::Borrow);
       if (!file.open() || file.write("abc", 3) != 3 || !file.seek(0)) return false;
       return file.read(nullptr, 3) == 0 && file.getPosition() == 0 && memory.read(nullptr, 3) == 0 &&
              memory.getPosition() == 0;
     }},
    {"write",
     [] {
       BTempStorage file;
       BMemoryOutputStream memory;
       return file.open() && file.write(nullptr, 3) == 0 && file.size() == 0 && memory.write(nullptr, 3) == 0 &&
              memory.size() == 0;
     }},
    {"streams on none",
     [] {
       BBufferedOutputStream buffered{Ref<BOutputStream>()};
       const auto unpacked = Ref<PackDecodeStream>::adopt(PackDecodeStream::create({}, *make<PackParams>()));
       return !buffered.isOpen() && buffered.write("abc", 3) == 0 && !unpacked->isOpen() && unpacked->readByte() == -1;
     }},
    {"a stream of nothing",
     [] {
       BMemoryInputStream none(nullptr, 5, BMemoryInputStream::Bytes::Copy);
       return none.isOpen() && none.size() == 0;
     }},
    {"readXmlbin", [] { return !readXmlbin(nullptr, 0) && !readXmlbin(nullptr, 100); }},
    {"nodes",
     [] {
       const auto root = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"root");
       const auto child = make<XMLNodeText>(root.get(), XmlNodeType::Text, L"text");
       root->appendChild(nullptr);
       root->insertChild(child.get(), -1);
       root->insertChild(child.get(), 1);
       return root->childCount() == 0 && !root->childAt(0) && !root->childAt(-1) && !root->removeChild(0) &&
              child->refCount() == 0;
     }},
};

void expectNothing(const Row* rows, std::size_t count) {
  shell();
  for (std::size_t i = 0; i < count; ++i) {
    SCOPED_TRACE(rows[i].call);
    EXPECT_NO_THROW(EXPECT_TRUE(rows[i].isNothing()));
  }
}

TEST(NothingAskedFor, OfTheShell) { expectNothing(kShellRows, std::size(kShellRows)); }

TEST(NothingAskedFor, OfTheCore) { expectNothing(kCoreRows, std::size(kCoreRows)); }

class Nameless final : public IGlobalEvent {
  CORVIX_IDENTITY(Nameless, 0x3D1E5B07, 0x4AC9E2F1, 0x9B60D7C8, 0x52A4F38E, IGlobalEvent)
 public:
  const wchar_t* name() const noexcept override { return nullptr; }
};

TEST(NothingAskedFor, OfAnEvent) {
  Nameless event;
  EXPECT_NO_THROW(manager().raiseEvent(event));
}

TEST(NothingAskedFor, OfDrawing) {
  const auto creator = createObject<IAGDCCreator>(manager(), L"AGDC.Memory");
  for (const u32 wish : {u32{0}, capability::kGdiPlus}) {
    const auto page = Ref<IAGDC>::adopt(creator->create(wish, 0, nullptr, 20, 20));
    ASSERT_TRUE(page);
    IAGDC& dc = *page;
    const auto image = Ref<IAGImage>::adopt(dc.createImage(4, 4, ColorModel::Indexed, 8));
    const PixelBox box{0, 0, 1, 1};
    const auto fonts = createObject<IFMFontMachine>(manager(), L"IFMFontMachine.Instance");
    const auto font = Ref<IFMFont>::adopt(fonts->createFont(nullptr));
    const struct {
      const char* call;
      bool isRefused;
    } rows[] = {{"attach", !Ref<IAGDC>::adopt(dc.createDetached())->attach(nullptr, 5, 5)},
                {"returnDevice", !dc.returnDevice(nullptr)},
                {"readPixel", !dc.readPixel(1, 1, nullptr)},
                {"getPixel", !dc.getPixel(1, 1, nullptr)},
                {"setDash", !dc.setDash(nullptr, 3, 0) && dc.setDash(nullptr, 0, 0)},
                {"dash", dc.dash(nullptr, 5, nullptr) == 0},
                {"curvesTo", !dc.curvesTo(nullptr, 3)},
                {"lines", !dc.lines(nullptr, 2)},
                {"strokePolyline", !dc.strokePolyline(nullptr, 3)},
                {"patternRect", !dc.patternRect(0, 0, 5, 5, nullptr)},
                {"clipPolygon", !dc.clipPolygon(nullptr, 3)},
                {"clipRegion", !dc.clipRegion(nullptr)},
                {"clipBounds", !dc.clipBounds(nullptr)},
                {"copyTo", !dc.copyTo(nullptr, 0, 0)},
                {"drawImagePixel", !dc.drawImagePixel(nullptr, 0, 0)},
                {"drawImage", !dc.drawImage(nullptr, 0, 0, 5, 5)},
                {"drawImagePart", !dc.drawImagePart(nullptr, box, 0, 0, 5, 5)},
                {"drawImageOffscreen", !dc.drawImageOffscreen(nullptr, 0, 0, 5, 5)},
                {"drawImageTransformed", !dc.drawImageTransformed(nullptr, Matrix())},
                {"drawImageTurned", !dc.drawImageTurned(nullptr, 0, 0, 5, 5, ImageTurn::None)},
                {"drawImageMatrix", !dc.drawImageMatrix(image.get(), 0, 0, 5, 5, nullptr)},
                {"drawImageRemapped", !dc.drawImageRemapped(image.get(), 0, 0, 5, 5, nullptr, 2)},
                {"drawImageMask", !dc.drawImageMask(nullptr, 0, 0, 5, 5)},
                {"drawImageThroughMemory", !dc.drawImageThroughMemory(nullptr, 0, 0)},
                {"userToDevice", !dc.userToDevice(nullptr, 2) && dc.userToDevice(nullptr, 0)},
                {"deviceToUser", !dc.deviceToUser(nullptr, 2) && dc.deviceToUser(nullptr, 0)},
                {"drawText", !drawText(dc, *font, 10, Matrix(), nullptr, 3)},
                {"drawGlyphs", !drawGlyphs(dc, *font, 10, Matrix(), nullptr, 3)},
                {"textWidth", textWidth(*font, 10, nullptr, 3) == 0},
                {"row", !image->row(-1) && !image->row(4)},
                {"setPalette", !image->setPalette(nullptr, 2)},
                {"pixelColor", !image->pixelColor(0, 0, nullptr)},
                {"loadFile", !image->loadFile(nullptr)},
                {"saveFile", !image->saveFile(nullptr, ImageFile::Png)}};
    for (const auto& row : rows) EXPECT_TRUE(row.isRefused) << row.call << (wish ? ", GDI+" : ", GDI");
  }
}

}  // namespace
}  // namespace corvix
