#include "library/LibraryClasses.h"

#include "core/baselib/objects/SmartObject.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace corvix {

namespace {

// Other modules and stored descriptors know the classes by these names.
constexpr const char* kNames[] = {
    "SException",
    "IBTransportable",
    "BNotifySender",
    "IBRemoteRemovable",
    "IBSmartObject",
    "IBSingleton",
    "IBQuery",
    "BRemoteRemovable",
    "BSmartObject",
    "IBHibernatable",
    "BHibernatable",
    "IBLangPackage",
    "IBTranslator",
    "IBRTTISupport",
    "IBProgressIndicator",
    "IBSelfReg",
    "IBEncryptionKey",
    "IBReport",
    "IBSecretary",
    "IActionSender",
    "IActionTarget",
    "IProgressCallback",
    "IShell",
    "IPluginManager",
    "IBSettings",
    "BSettings",
    "IBStream",
    "BStream",
    "IBRAStream",
    "BInputStream",
    "BRAInputStream",
    "BOutputStream",
    "BFileOutputStream",
    "BMemoryOutputStream",
    "BThread",
    "IDocument",
    "IMsgTarget",
    "IView",
    "IHWNDView",
    "IWindow",
    "IFrameWindow",
    "IGUIManager",
    "IAction",
    "IActionManager",
    "IFileFilter",
    "IDocFormat",
    "IDocManager",
    "XMLNode",
    "XMLNodeText",
    "XMLNodeComment",
    "XMLNodeNode",
    "XMLNodeParam",
    "IGlobalEvent",
    "IGlobalEventTarget",
    "KPluginManager",
    "KShell",
    "BClassFactory",
    "IBCollection",
    "KClassFactoryLocal",
    "ICommandLine",
    "IDocumentPanel",
    "IDocumentView",
    "IStateHistory",
    "IMenuItem",
    "BTempStorage",
    "BChunkInputStream",
};

TEST(LibraryClasses, HaveTheirNamesWordsOfTheirOwnAndFindThemselves) {
  const auto classes = libraryClasses();
  ASSERT_EQ(classes.size(), std::size(kNames));
  std::set<std::string> texts;
  alignas(16) char object[64];  // only passed on: a class finds itself without a look at the object
  for (std::size_t i = 0; i < classes.size(); ++i) {
    const stype_info& info = classes[i].info;
    const std::string name = kNames[i];
    EXPECT_EQ(info.className(), name);
    EXPECT_EQ(info.classNameW(), std::wstring(name.begin(), name.end()));
    EXPECT_TRUE(texts.insert(info.text()).second) << name << " has the words of another class";
    void* const self = info == IBRTTISupport::classInfo() ? nullptr : object;  // that one is no stop of the walk
    EXPECT_EQ(classes[i].query(object, info), self) << name;
  }
}

}  // namespace

}  // namespace corvix
