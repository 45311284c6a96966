#include "library/LibraryClasses.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

namespace corvix {

namespace {

// Other modules and stored descriptors know the classes by these names.
constexpr char kNames[] =
    "SException IBTransportable BNotifySender IBRemoteRemovable IBSmartObject IBSingleton IBQuery "
    "BRemoteRemovable BSmartObject IBHibernatable BHibernatable IBLangPackage IBTranslator IBRTTISupport "
    "IBProgressIndicator IBSelfReg IBSupplier IBEncryptionKey IBReport IBSecretary IActionSender IActionTarget "
    "IProgressCallback IShell IPluginManager IBSettings BSettings IBStream BStream IBRAStream "
    "BInputStream BRAInputStream BOutputStream BFileOutputStream BMemoryOutputStream BThread IDocument "
    "IMsgTarget IView IHWNDView IWindow IFrameWindow IGUIManager IAction IActionManager IFileFilter "
    "IDocFormat IDocManager XMLNode XMLNodeText XMLNodeComment XMLNodeNode XMLNodeParam PackParams PackDecodeStream "
    "PackImageInputStream PackFlateInputStream IGlobalEvent "
    "IGlobalEventTarget KPluginManager KShell BClassFactory IBCollection KHTTPSupplier KIStreamSupplier "
    "KClassFactoryLocal KFileSupplier ICommandLine "
    "IDocumentPanel IDocumentView IStateHistory IMenuItem BTempStorage BChunkInputStream "
    "IAGDC AGDC IAGDCCreator AGDCCreator QuillScreenDCCreator QuillMemoryDCCreator IAGImage AGImage ";

TEST(LibraryClasses, HaveTheirNamesWordsOfTheirOwnAndFindThemselves) {
  std::istringstream names(kNames);
  std::string name;
  std::set<std::string> texts;
  alignas(16) char object[64];  // only passed on: a class finds itself without a look at the object
  for (const LibraryClass& one : libraryClasses()) {
    ASSERT_TRUE(names >> name);
    EXPECT_EQ(one.info.className(), name);
    EXPECT_EQ(one.info.classNameW(), std::wstring(name.begin(), name.end()));
    EXPECT_TRUE(texts.insert(one.info.text()).second) << name << " has the words of another class";
    void* const self = one.info == IBRTTISupport::classInfo() ? nullptr : object;  // that one is no stop of the walk
    EXPECT_EQ(one.query(object, one.info), self) << name;
  }
  EXPECT_FALSE(names >> name) << name;
}

}  // namespace

}  // namespace corvix
