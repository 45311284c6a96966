// The plug-in manager: knows every module's descriptor and creates objects by interface name. Texts that the
// interfaces here return are valid as long as the object that returned them. [shell thread]
#pragma once

#include "core/baselib/objects/Collection.h"
#include "core/baselib/objects/Ref.h"

namespace corvix {

class IGlobalEvent;
class IPluginManager;
class XMLNode;

enum class ModuleState {
  Described,  // the descriptor is read, the module's code is not loaded yet
  Loaded,     // the code is loaded and its class factory is known
  Failed,     // nothing more can be created from it; `reason` says why
  NoPlugin,   // a library without a descriptor, as plug-ins have beside them; it is never loaded from here
};

// One module and what its descriptor says of it.
class IPluginModule : public BSmartObject {
  CORVIX_IDENTITY(IPluginModule, 0xF3408D2E, 0x4B7165CA, 0x96D3E80F, 0x2C5A91B7, BSmartObject)

 public:
  virtual ModuleState state() const noexcept = 0;

  // A sentence for the user: why the module failed, what is wrong with its descriptor, or why it could not
  // create the object that was asked for last. Empty when all is well.
  virtual const wchar_t* reason() const noexcept = 0;

  virtual const wchar_t* path() const noexcept = 0;
  virtual const wchar_t* name() const noexcept = 0;     // empty if the descriptor has none
  virtual const wchar_t* version() const noexcept = 0;  // likewise

  // Null when the descriptor's is missing or does not have four numbers; such a module is in no other
  // module's reach by identifier, but its interfaces are registered.
  virtual const stype_info* identifier() const noexcept = 0;

  // An attribute of the descriptor's Plugin element, its name in any letter case; null if there is none.
  virtual const wchar_t* attribute(const wchar_t* attributeName) const noexcept = 0;

  virtual i32 settingCount() const noexcept = 0;

  // Likewise of one of its Setting elements; `index` is from 0, null outside the list.
  virtual const wchar_t* settingAttribute(i32 index, const wchar_t* attributeName) const noexcept = 0;
};

// Whether a module is left out because the program ended in it at an earlier start: while its code was loaded, its
// factory was asked first, or one of its objects was told of the start. Every IPluginModule answers to it.
class IStartRecord : public IBTransportable {
  CORVIX_IDENTITY(IStartRecord, 0xD4C7B1A8, 0x0E25F963, 0x7B9A482D, 0xF36150CE, IBTransportable)

 public:
  // It is then `Failed`, and `reason` says when that was; its interfaces and settings are registered.
  virtual bool isLeftOut() const noexcept = 0;

  // From the next start on it is treated as any other, also when its file has not changed. False when it is not left
  // out, or the system does not let the record be taken away.
  virtual bool tryAgain() noexcept = 0;
};

// One interface that a module declares.
class IPluginInterface : public BSmartObject {
  CORVIX_IDENTITY(IPluginInterface, 0x61BE39C4, 0x43FA80D7, 0xB1579E2C, 0xE8064FA3, BSmartObject)

 public:
  virtual const wchar_t* name() const noexcept = 0;
  virtual const stype_info& identifier() const noexcept = 0;
  virtual const wchar_t* attribute(const wchar_t* attributeName) const noexcept = 0;

  // Adds no reference.
  virtual IPluginModule* module() const noexcept = 0;

  // A new object, owned by the caller. Loads the module's code if this is the first object of it. Null when
  // that fails; `module()->reason()` then says why.
  virtual IBSmartObject* createObject() = 0;
};

// How it goes with the objects of one interface; every IPluginInterface answers to it.
class ICreationReport : public IBTransportable {
  CORVIX_IDENTITY(ICreationReport, 0x68DDEDDD, 0x7C2B721F, 0x26FA9BDF, 0x8D7DEF7D, IBTransportable)

 public:
  // Why the object asked for last could not be made or was of no use; empty when it was fine, or none was asked for.
  // `IPluginModule::reason` tells of the module's last object, whichever it was.
  virtual const wchar_t* reason() const noexcept = 0;

  // Who got an object that is of no use to them says why: that is the reason then, and stands in the log.
  virtual void reject(const wchar_t* why) = 0;
};

// An interface under the name "IPluginManagerAfterInit" is created and told once when every module of the start
// is known; one under "IPluginManagerBeforeDestroy" when the shell shuts down. Both are released right after.
class IPluginManagerAfterInit : public IBTransportable {
  CORVIX_IDENTITY(IPluginManagerAfterInit, 0xA71B8102, 0x41F465CF, 0xD19A46AA, 0x7F0C17F1, IBTransportable)

 public:
  virtual void afterInit(IPluginManager& manager) = 0;
};

class IPluginManagerBeforeDestroy : public IBTransportable {
  CORVIX_IDENTITY(IPluginManagerBeforeDestroy, 0x075A9369, 0x5B2A54C6, 0x96F422EE, 0x3A3D3032, IBTransportable)

 public:
  virtual void beforeDestroy(IPluginManager& manager) = 0;
};

class IPluginManager : public BSmartObject {
  CORVIX_IDENTITY(IPluginManager, 0xA95C1F70, 0x4683D2E9, 0x8C4F07B6, 0x35ED6A18, BSmartObject)

 public:
  // The IPluginInterface objects declared under exactly this name; the list grows when more are registered.
  // Their attribute "Order" ("Low" or "Hight": -100, "Default" or none: 0, or a number) says who comes first,
  // a smaller one earlier, equal ones as they were registered. With a reference that the caller owns; null when nobody
  // declares the name.
  virtual IBCollection* findByName(const wchar_t* interfaceName) = 0;

  // A new object, owned by the caller, from the first module under this name that can make one; else null.
  virtual IBSmartObject* createObject(const wchar_t* interfaceName) = 0;

  // Registers what the descriptor of a module that is already loaded declares. `module` is its handle of the
  // system, which must stay loaded. False when `root` has no Plugin element.
  virtual bool registerDescriptor(void* module, XMLNode* root) = 0;

  // Reads the descriptor of every module of a folder ("*.dll") in the order of their names, without running
  // any of their code. A module that is known already is left out. Returns how many modules were added to
  // the list, those included that failed.
  virtual i32 scanFolder(const wchar_t* folder) = 0;

  // Reads one module's descriptor and loads its code. `path` is absolute. The module, to which no reference
  // is added, or null when it cannot be loaded; the list of modules then says why.
  virtual IPluginModule* loadModule(const wchar_t* path) = 0;

  // Every module that was found, in the order in which it was, the library itself first.
  virtual i32 moduleCount() const noexcept = 0;
  virtual IPluginModule* moduleAt(i32 index) const noexcept = 0;  // null outside the list

  // The module with this identifier, or null. Adds no reference.
  virtual IPluginModule* findModule(const stype_info& identifier) const noexcept = 0;

  // Every interface of every module, module by module in the order of their descriptors.
  virtual i32 interfaceCount() const noexcept = 0;
  virtual IPluginInterface* interfaceAt(i32 index) const noexcept = 0;  // null outside the list

  // Writes every declared setting, value and default, to the user's registry. Returns how many could be
  // written.
  virtual i32 saveSettings() = 0;

  // Delivers an event: to the manager's own list of those told before, the process-wide one, an object of
  // every interface declared as "GlobalEvent." and the event's name, the manager's own list of those told
  // after, the process-wide one. See shell/GlobalEvent.h.
  virtual void raiseEvent(IGlobalEvent& event) = 0;
  virtual BNotifySender& preEventSender() noexcept = 0;
  virtual BNotifySender& postEventSender() noexcept = 0;
};

// A new object as one of its interfaces, or nothing when the name cannot be created or has no such interface.
template <class Interface>
[[nodiscard]] Ref<Interface> createObject(IPluginManager& manager, const wchar_t* interfaceName) {
  return Ref<IBSmartObject>::adopt(manager.createObject(interfaceName)).template as<Interface>();
}

}  // namespace corvix
