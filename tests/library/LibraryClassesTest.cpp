#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/objects/Collection.h"
#include "core/baselib/objects/NotifySender.h"
#include "core/baselib/objects/Singleton.h"
#include "core/baselib/objects/SmartObject.h"
#include "core/baselib/objects/Transportable.h"
#include "core/baselib/streams/BufferedOutputStream.h"
#include "core/baselib/streams/ChunkInputStream.h"
#include "core/baselib/streams/FileOutputStream.h"
#include "core/baselib/streams/InputStream.h"
#include "core/baselib/streams/MemoryOutputStream.h"
#include "core/baselib/streams/OutputStream.h"
#include "core/baselib/streams/RandomAccess.h"
#include "core/baselib/streams/RandomAccessInputStream.h"
#include "core/baselib/streams/Stream.h"
#include "core/baselib/streams/TempStorage.h"
#include "core/baselib/streams/WindowInputStream.h"
#include "core/baselib/system/Exception.h"
#include "core/baselib/threads/Thread.h"
#include "core/settings/BSettings_p.h"
#include "core/settings/Settings.h"
#include "core/suppliers/InternetStream.h"
#include "core/suppliers/KFileSupplier_p.h"
#include "core/suppliers/KHTTPSupplier_p.h"
#include "core/suppliers/KIStreamSupplier_p.h"
#include "core/suppliers/Supplier.h"
#include "core/suppliers/decoding/PackDecodeStream.h"
#include "core/suppliers/decoding/PackFlateInputStream.h"
#include "core/suppliers/decoding/PackImageInputStream.h"
#include "core/suppliers/decoding/PackParams.h"
#include "core/xml/XmlNode.h"
#include "graphics/IAGDC.h"
#include "graphics/IAGDCCreator.h"
#include "graphics/Image.h"
#include "graphics/contexts/AGDC_p.h"
#include "graphics/creators/QuillCreators_p.h"
#include "graphics/fonts/FMFontMachine_p.h"
#include "graphics/fonts/FontMachine.h"
#include "graphics/fonts/FontSubstitutors_p.h"
#include "graphics/images/AGImage_p.h"
#include "shell/Actions.h"
#include "shell/ClassFactory.h"
#include "shell/CommandLine.h"
#include "shell/GlobalEvent.h"
#include "shell/PluginManager.h"
#include "shell/Progress.h"
#include "shell/Shell.h"
#include "shell/documents/DocFormat.h"
#include "shell/documents/DocManager.h"
#include "shell/documents/Document.h"
#include "shell/documents/FileFilter.h"
#include "shell/gui/DocumentPanel.h"
#include "shell/gui/DocumentView.h"
#include "shell/gui/FrameWindow.h"
#include "shell/gui/GUIManager.h"
#include "shell/gui/HWNDView.h"
#include "shell/gui/MenuItem.h"
#include "shell/gui/MsgTarget.h"
#include "shell/gui/View.h"
#include "shell/gui/Window.h"
#include "shell/history/StateHistory.h"
#include "shell/instance/KShell_p.h"
#include "shell/language/LangPackage.h"
#include "shell/language/Translator.h"
#include "shell/modules/KClassFactoryLocal_p.h"
#include "shell/modules/KPluginManager_p.h"
#include "shell/services/EncryptionKey.h"
#include "shell/services/Report.h"
#include "shell/services/Secretary.h"
#include "shell/services/SelfReg.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace corvix {

namespace {

// Other modules and stored descriptors know the classes by these names.
struct Row {
  const char* name;
  const stype_info& info;
  void* (*find)(void* object,
                const stype_info& wanted);  // the walk from that class on, over an object seen as the class
};
#define ROW(Class)                                                                                            \
  {                                                                                                           \
#Class, Class::classInfo(),                                                                               \
        [](void* object,                                                                                      \
           const stype_info& wanted) -> void* { return identity::find(static_cast<Class*>(object), wanted); } \
  }

const Row kClasses[] = {
    ROW(SException),
    ROW(IBTransportable),
    ROW(BNotifySender),
    ROW(IBRemoteRemovable),
    ROW(IBSmartObject),
    ROW(IBSingleton),
    ROW(IBQuery),
    ROW(BRemoteRemovable),
    ROW(BSmartObject),
    ROW(IBHibernatable),
    ROW(BHibernatable),
    ROW(IBLangPackage),
    ROW(IBTranslator),
    ROW(IBRTTISupport),
    ROW(IBProgressIndicator),
    ROW(IBSelfReg),
    ROW(IBSupplier),
    ROW(IBEncryptionKey),
    ROW(IBReport),
    ROW(IBSecretary),
    ROW(IActionSender),
    ROW(IActionTarget),
    ROW(IProgressCallback),
    ROW(IShell),
    ROW(IPluginManager),
    ROW(IBSettings),
    ROW(BSettings),
    ROW(IBStream),
    ROW(BStream),
    ROW(IBRAStream),
    ROW(IBResizableStream),
    ROW(IInternetStream),
    ROW(IInternetCancel),
    ROW(BInputStream),
    ROW(BRAInputStream),
    ROW(BOutputStream),
    ROW(BFileOutputStream),
    ROW(BMemoryOutputStream),
    ROW(BBufferedOutputStream),
    ROW(BWindowInputStream),
    ROW(BThread),
    ROW(IAGDC),
    ROW(IAGDCCreator),
    ROW(IAGImage),
    ROW(AGImage),
    ROW(AGDCCreator),
    ROW(LivingContexts),
    ROW(QuillScreenDCCreator),
    ROW(QuillMemoryDCCreator),
    ROW(AGDC),
    ROW(IFMFont),
    ROW(IFMFontMachine),
    ROW(IFMFontCreator),
    ROW(FMFontMachine),
    ROW(FakeSubstitutor),
    ROW(IDocument),
    ROW(IMsgTarget),
    ROW(IView),
    ROW(IHWNDView),
    ROW(IWindow),
    ROW(IFrameWindow),
    ROW(IGUIManager),
    ROW(IAction),
    ROW(IActionManager),
    ROW(IFileFilter),
    ROW(IDocFormat),
    ROW(IDocManager),
    ROW(XMLNode),
    ROW(XMLNodeText),
    ROW(XMLNodeComment),
    ROW(XMLNodeNode),
    ROW(XMLNodeParam),
    ROW(PackParams),
    ROW(PackDecodeStream),
    ROW(PackImageInputStream),
    ROW(PackFlateInputStream),
    ROW(IGlobalEvent),
    ROW(IGlobalEventTarget),
    ROW(KPluginManager),
    ROW(KShell),
    ROW(BClassFactory),
    ROW(IBCollection),
    ROW(KHTTPSupplier),
    ROW(KIStreamSupplier),
    ROW(KClassFactoryLocal),
    ROW(KFileSupplier),
    ROW(SystemFontSubstitutor),
    ROW(ICommandLine),
    ROW(IDocumentPanel),
    ROW(IDocumentView),
    ROW(IStateHistory),
    ROW(IMenuItem),
    ROW(BTempStorage),
    ROW(BChunkInputStream),
};

TEST(LibraryClasses, HaveTheirNamesWordsOfTheirOwnAndFindThemselves) {
  std::set<std::string> texts;
  alignas(16) char object[64];  // only passed on: a class finds itself without a look at the object
  for (const Row& one : kClasses) {
    const std::string name = one.name;
    EXPECT_EQ(one.info.className(), name);
    EXPECT_EQ(one.info.classNameW(), std::wstring(name.begin(), name.end()));
    EXPECT_TRUE(texts.insert(one.info.text()).second) << name << " has the words of another class";
    void* const self = one.info == IBRTTISupport::classInfo() ? nullptr : object;  // that one is no stop of the walk
    EXPECT_EQ(one.find(object, one.info), self) << name;
  }
}

}  // namespace

}  // namespace corvix
