#include "library/LibraryClasses.h"

#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/objects/Collection.h"
#include "core/baselib/objects/NotifySender.h"
#include "core/baselib/objects/Singleton.h"
#include "core/baselib/objects/SmartObject.h"
#include "core/baselib/objects/Transportable.h"
#include "core/baselib/streams/ChunkInputStream.h"
#include "core/baselib/streams/FileOutputStream.h"
#include "core/baselib/streams/InputStream.h"
#include "core/baselib/streams/MemoryOutputStream.h"
#include "core/baselib/streams/OutputStream.h"
#include "core/baselib/streams/RandomAccess.h"
#include "core/baselib/streams/RandomAccessInputStream.h"
#include "core/baselib/streams/Stream.h"
#include "core/baselib/streams/TempStorage.h"
#include "core/baselib/system/Exception.h"
#include "core/baselib/system/Thread.h"
#include "core/settings/BSettings.h"
#include "core/settings/Settings.h"
#include "core/suppliers/KFileSupplier.h"
#include "core/suppliers/KHTTPSupplier.h"
#include "core/suppliers/KIStreamSupplier.h"
#include "core/suppliers/decoding/PackFlateInputStream.h"
#include "core/suppliers/decoding/PackImageInputStream.h"
#include "core/xml/XmlNode.h"
#include "graphics/contexts/MemoryContexts.h"
#include "graphics/creators/QuillCreators.h"
#include "graphics/images/AGImage.h"
#include "shell/Actions.h"
#include "shell/ClassFactory.h"
#include "shell/CommandLine.h"
#include "shell/Documents.h"
#include "shell/GlobalEvent.h"
#include "shell/Gui.h"
#include "shell/KClassFactoryLocal.h"
#include "shell/KPluginManager.h"
#include "shell/KShell.h"
#include "shell/PluginManager.h"
#include "shell/Progress.h"
#include "shell/Services.h"
#include "shell/Shell.h"

namespace corvix {

namespace {

template <class Class>
constexpr LibraryClass row() noexcept {
  return {Class::classInfo(), [](void* object, const stype_info& wanted) -> void* {
            return identity::find(static_cast<Class*>(object), wanted);
          }};
}

}  // namespace

std::span<const LibraryClass> libraryClasses() noexcept {
  static const LibraryClass rows[] = {
      row<SException>(),
      row<IBTransportable>(),
      row<BNotifySender>(),
      row<IBRemoteRemovable>(),
      row<IBSmartObject>(),
      row<IBSingleton>(),
      row<IBQuery>(),
      row<BRemoteRemovable>(),
      row<BSmartObject>(),
      row<IBHibernatable>(),
      row<BHibernatable>(),
      row<IBLangPackage>(),
      row<IBTranslator>(),
      row<IBRTTISupport>(),
      row<IBProgressIndicator>(),
      row<IBSelfReg>(),
      row<IBSupplier>(),
      row<IBEncryptionKey>(),
      row<IBReport>(),
      row<IBSecretary>(),
      row<IActionSender>(),
      row<IActionTarget>(),
      row<IProgressCallback>(),
      row<IShell>(),
      row<IPluginManager>(),
      row<IBSettings>(),
      row<BSettings>(),
      row<IBStream>(),
      row<BStream>(),
      row<IBRAStream>(),
      row<BInputStream>(),
      row<BRAInputStream>(),
      row<BOutputStream>(),
      row<BFileOutputStream>(),
      row<BMemoryOutputStream>(),
      row<BThread>(),
      row<IDocument>(),
      row<IMsgTarget>(),
      row<IView>(),
      row<IHWNDView>(),
      row<IWindow>(),
      row<IFrameWindow>(),
      row<IGUIManager>(),
      row<IAction>(),
      row<IActionManager>(),
      row<IFileFilter>(),
      row<IDocFormat>(),
      row<IDocManager>(),
      row<XMLNode>(),
      row<XMLNodeText>(),
      row<XMLNodeComment>(),
      row<XMLNodeNode>(),
      row<XMLNodeParam>(),
      row<PackParams>(),
      row<PackDecodeStream>(),
      row<PackImageInputStream>(),
      row<PackFlateInputStream>(),
      row<IGlobalEvent>(),
      row<IGlobalEventTarget>(),
      row<KPluginManager>(),
      row<KShell>(),
      row<BClassFactory>(),
      row<IBCollection>(),
      row<KHTTPSupplier>(),
      row<KIStreamSupplier>(),
      row<KClassFactoryLocal>(),
      row<KFileSupplier>(),
      row<ICommandLine>(),
      row<IDocumentPanel>(),
      row<IDocumentView>(),
      row<IStateHistory>(),
      row<IMenuItem>(),
      row<BTempStorage>(),
      row<BChunkInputStream>(),
      row<IAGDC>(),
      row<AGDC>(),
      row<IAGDCCreator>(),
      row<AGDCCreator>(),
      row<QuillScreenDCCreator>(),
      row<QuillMemoryDCCreator>(),
      row<IAGImage>(),
      row<AGImage>(),
  };
  return rows;
}

}  // namespace corvix
