# corvix.dll. Its sources are compiled once, as objects: the tests that look inside link those directly.
set(CORVIX_PUBLIC_HEADERS
    core/baselib/Api.h
    core/baselib/identity/Identity.h
    core/baselib/identity/IdentityWalk.h
    core/baselib/identity/RttiSupport.h
    core/baselib/identity/StypeInfo.h
    core/baselib/memory/AutoRealizePool.h
    core/baselib/memory/FixedMemoryPool.h
    core/baselib/memory/Heap.h
    core/baselib/memory/HeapAllocated.h
    core/baselib/memory/Hibernatable.h
    core/baselib/memory/MemoryManager.h
    core/baselib/memory/MemoryPool.h
    core/baselib/memory/SizeClassMemoryPool.h
    core/baselib/memory/SystemMemoryPool.h
    core/baselib/objects/Collection.h
    core/baselib/objects/GlobalData.h
    core/baselib/objects/GlobalSender.h
    core/baselib/objects/NotifySender.h
    core/baselib/objects/Ref.h
    core/baselib/objects/Singleton.h
    core/baselib/objects/SmartObject.h
    core/baselib/objects/Transportable.h
    core/baselib/streams/ChunkInputStream.h
    core/baselib/streams/FileInputStream.h
    core/baselib/streams/FileOutputStream.h
    core/baselib/streams/ForwardInputStream.h
    core/baselib/streams/InputStream.h
    core/baselib/streams/MemoryInputStream.h
    core/baselib/streams/MemoryOutputStream.h
    core/baselib/streams/OutputStream.h
    core/baselib/streams/RandomAccess.h
    core/baselib/streams/RandomAccessInputStream.h
    core/baselib/streams/Stream.h
    core/baselib/streams/TempStorage.h
    core/baselib/system/CriticalSection.h
    core/baselib/system/Exception.h
    core/baselib/system/Log.h
    core/baselib/system/Thread.h
    core/baselib/system/TimerTable.h
    core/baselib/text/NumberText.h
    core/baselib/text/StringHash.h
    core/baselib/text/Variant.h
    core/baselib/text/WideString.h
    core/settings/Settings.h
    core/suppliers/FileLocation.h
    core/suppliers/InternetStream.h
    core/suppliers/KFileSupplier.h
    core/suppliers/KHTTPSupplier.h
    core/suppliers/KIStreamSupplier.h
    core/suppliers/Supplier.h
    core/suppliers/UrlRecord.h
    core/suppliers/decoding/PackDecodeStream.h
    core/suppliers/decoding/PackFlateInputStream.h
    core/suppliers/decoding/PackImageInputStream.h
    core/suppliers/decoding/PackParams.h
    core/xml/XmlNode.h
    core/xml/XmlbinReader.h
    graphics/AGDC.h
    graphics/AGDCCreator.h
    graphics/Color.h
    graphics/Geometry.h
    graphics/Image.h
    graphics/SystemHandles.h
    graphics/fonts/FontMachine.h
    shell/Actions.h
    shell/ClassFactory.h
    shell/CommandLine.h
    shell/Documents.h
    shell/GlobalEvent.h
    shell/Gui.h
    shell/Locations.h
    shell/Notifications.h
    shell/Plugin.h
    shell/PluginManager.h
    shell/Progress.h
    shell/Services.h
    shell/Shell.h)

add_library(corvix-objects OBJECT
    core/baselib/identity/ParseClassWords.cpp
    core/baselib/identity/StypeInfo.cpp
    core/baselib/memory/AutoRealizePool.cpp
    core/baselib/memory/FixedMemoryPool.cpp
    core/baselib/memory/Heap.cpp
    core/baselib/memory/Hibernatable.cpp
    core/baselib/memory/ManagerState.cpp
    core/baselib/memory/MemoryManager.cpp
    core/baselib/memory/MemoryPool.cpp
    core/baselib/memory/SizeClassMemoryPool.cpp
    core/baselib/memory/SystemMemoryPool.cpp
    core/baselib/objects/GlobalData.cpp
    core/baselib/objects/GlobalSender.cpp
    core/baselib/objects/NotifySender.cpp
    core/baselib/objects/SmartObject.cpp
    core/baselib/streams/ChunkInputStream.cpp
    core/baselib/streams/FileInputStream.cpp
    core/baselib/streams/FileOutputStream.cpp
    core/baselib/streams/ForwardInputStream.cpp
    core/baselib/streams/InputStream.cpp
    core/baselib/streams/MemoryInputStream.cpp
    core/baselib/streams/MemoryOutputStream.cpp
    core/baselib/streams/OutputStream.cpp
    core/baselib/streams/RandomAccessInputStream.cpp
    core/baselib/streams/RangedFile.cpp
    core/baselib/streams/TempStorage.cpp
    core/baselib/system/ApplicationKey.cpp
    core/baselib/system/CriticalSection.cpp
    core/baselib/system/Exception.cpp
    core/baselib/system/KernelFile.cpp
    core/baselib/system/Log.cpp
    core/baselib/system/RegistryKey.cpp
    core/baselib/system/Thread.cpp
    core/baselib/system/TimerTable.cpp
    core/baselib/text/NumberText.cpp
    core/baselib/text/StringHash.cpp
    core/baselib/text/Variant.cpp
    core/settings/BSettings.cpp
    core/settings/SettingText.cpp
    core/settings/SettingsRegistry.cpp
    core/suppliers/FileLocation.cpp
    core/suppliers/InternetInputStream.cpp
    core/suppliers/KFileSupplier.cpp
    core/suppliers/KHTTPSupplier.cpp
    core/suppliers/KIStreamSupplier.cpp
    core/suppliers/UrlEscape.cpp
    core/suppliers/UrlRecord.cpp
    core/suppliers/UrlResolve.cpp
    core/suppliers/WinInet.cpp
    core/suppliers/decoding/LzwInputStream.cpp
    core/suppliers/decoding/PackDecodeStream.cpp
    core/suppliers/decoding/PackFlateInputStream.cpp
    core/suppliers/decoding/PackImageInputStream.cpp
    core/suppliers/decoding/PackParams.cpp
    core/suppliers/decoding/TextDecoders.cpp
    core/xml/Attributes.cpp
    core/xml/XmlNode.cpp
    core/xml/XmlbinReader.cpp
    graphics/SystemHandles.cpp
    graphics/contexts/DrawingContext.cpp
    graphics/contexts/DrawingDevice.cpp
    graphics/contexts/DrawingImages.cpp
    graphics/contexts/DrawingPaths.cpp
    graphics/contexts/DrawingPixels.cpp
    graphics/contexts/GdiPlusClip.cpp
    graphics/contexts/GdiPlusContext.cpp
    graphics/contexts/GdiPlusDrawing.cpp
    graphics/contexts/GdiPlusImages.cpp
    graphics/contexts/OffscreenBitmap.cpp
    graphics/contexts/PlainClip.cpp
    graphics/contexts/PlainContext.cpp
    graphics/contexts/PlainImages.cpp
    graphics/creators/QuillCreators.cpp
    graphics/fonts/FMFontMachine.cpp
    graphics/fonts/FontSubstitutors.cpp
    graphics/gdi/Gdi.cpp
    graphics/gdiplus/ClipStack.cpp
    graphics/gdiplus/GdiPlusTable.cpp
    graphics/images/AGImage.cpp
    graphics/images/CmykConversion.cpp
    graphics/images/ImageBits.cpp
    graphics/images/ImageFiles.cpp
    graphics/path/Path.cpp
    graphics/path/PathClip.cpp
    graphics/quality/Quality.cpp
    graphics/quality/QualityListener.cpp
    library/LibraryClasses.cpp
    library/LibraryObjects.cpp
    shell/KActionManager.cpp
    shell/KClassFactoryLocal.cpp
    shell/KPluginManager.cpp
    shell/KShell.cpp
    shell/KShellCommandLine.cpp
    shell/KShellNotifications.cpp
    shell/LibraryModule.cpp
    shell/Locations.cpp
    shell/Notifications.cpp
    shell/PluginModule.cpp
    shell/TaskQueue.cpp
    shell/Thrown.cpp
    shell/modules/ModuleFile.cpp
    shell/modules/PeImage.cpp)
target_compile_definitions(corvix-objects PUBLIC CORVIX_BUILDING PRIVATE UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
target_include_directories(corvix-objects PUBLIC "${PROJECT_SOURCE_DIR}")

# zlib goes into the library, so that no further file has to be shipped.
find_library(CORVIX_ZLIB NAMES libz.a REQUIRED)
target_link_libraries(corvix-objects PUBLIC gdi32 PRIVATE corvix-warnings INTERFACE "${CORVIX_ZLIB}")

if(MSVC)
    target_sources(corvix-objects PRIVATE shell/modules/GuardedCall_msvc.cpp)
else()
    target_sources(corvix-objects PRIVATE shell/modules/GuardedCall_i686.cpp)
endif()

# A constructor there looks at what a former construction of the same static object left.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    set_source_files_properties(core/baselib/identity/StypeInfo.cpp PROPERTIES COMPILE_OPTIONS "-fno-lifetime-dse;-Wno-uninitialized;-Wno-maybe-uninitialized")
endif()

corvix_add_descriptor(corvix-descriptor resources/plugin.xml)

add_library(corvix SHARED shell/LibraryEntry.cpp)
target_link_libraries(corvix PRIVATE corvix-objects corvix-warnings corvix-descriptor)
target_compile_definitions(corvix PRIVATE WIN32_LEAN_AND_MEAN NOMINMAX)
target_sources(corvix PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${CORVIX_PUBLIC_HEADERS})
target_compile_features(corvix PUBLIC cxx_std_17)
set_target_properties(corvix PROPERTIES PREFIX "")
add_library(Corvix::corvix ALIAS corvix)
corvix_copy_runtime(corvix)

# Coordinates and colours are worked out in doubles: with SSE2, which 32-bit Windows itself demands since version 8,
# that is several times faster than on the x87 stack.
if(NOT MSVC)
    get_target_property(corvix_sources corvix-objects SOURCES)
    list(FILTER corvix_sources INCLUDE REGEX "^graphics/")
    set_property(SOURCE ${corvix_sources} APPEND PROPERTY COMPILE_OPTIONS -msse2 -mfpmath=sse)
endif()
