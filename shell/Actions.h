// Actions: what a user can ask for by a menu, a key or a script, each under the name "Actions." and words
// ("Actions.File.Open"). An action is added at run time or declared by a plug-in as an interface of that name.
//
// Validating asks whether it can be done now, processing does it. Both go the same way: listeners of the
// "pre" notification, those of "OnValidateAction" or "OnProcessAction", the action itself, those of the "post"
// notification; each first on the shell's own list, then on the process-wide one. An answer notify::kStop
// before the action's turn ends it all, notify::kTaken does it in the action's stead. [shell thread]
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

// Who asks for an action.
class IActionSender : public IBTransportable {
  CORVIX_IDENTITY(IActionSender, 0xA329B5AF, 0x6E6137C5, 0xF5AB2878, 0xC1B4B92C, IBTransportable)

 public:
  // For the user: "menu File", "script".
  virtual const wchar_t* senderName() const noexcept = 0;
};

class IAction : public IBTransportable {
  CORVIX_IDENTITY(IAction, 0x5A1BBFD9, 0x174B342A, 0xA6D05589, 0x9A45EC20, IBTransportable)

 public:
  // With "Actions." before it.
  virtual const wchar_t* name() const noexcept = 0;

  // notify::kTaken when it can be done or was done, notify::kStop when not. `sender` may be null.
  virtual int validate(IActionSender* sender) = 0;
  virtual int process(IActionSender* sender) = 0;
};

// Has a say in actions, listening to "OnValidateAction" and "OnProcessAction".
class IActionTarget : public IBTransportable {
  CORVIX_IDENTITY(IActionTarget, 0x85111A3A, 0x0581037C, 0x4B961B2A, 0x9AD03D2F, IBTransportable)

 public:
  virtual int onValidateAction(IAction& action, IActionSender* sender) = 0;
  virtual int onProcessAction(IAction& action, IActionSender* sender) = 0;
};

// Listens to the four notifications around actions. Answers to the "post" ones change nothing.
class IActionListener : public IBTransportable {
  CORVIX_IDENTITY(IActionListener, 0x99F74A91, 0xDB8C7FC5, 0xE4FDEDE6, 0xE67A860C, IBTransportable)

 public:
  virtual int preValidateAction(IAction& action, IActionSender* sender) = 0;
  virtual int postValidateAction(IAction& action, IActionSender* sender) = 0;
  virtual int preProcessAction(IAction& action, IActionSender* sender) = 0;
  virtual int postProcessAction(IAction& action, IActionSender* sender) = 0;
};

// Found under the name "IActionManager.Instance". Names may be given with or without "Actions.".
class IActionManager : public BSmartObject {
  CORVIX_IDENTITY(IActionManager, 0x09EFBD53, 0x24E25A45, 0x37AD7C1C, 0x3C8C71E9, BSmartObject)

 public:
  // Keeps a reference. Takes the place of an action of the same name.
  virtual void addAction(IAction* action) = 0;
  virtual void removeAction(const wchar_t* name) = 0;

  // One that was added, or a new object of the declared interface of that name, which is then kept. Null when
  // there is neither. Adds no reference.
  virtual IAction* findAction(const wchar_t* name) = 0;

  // notify::kTaken: it can be done, was done. notify::kStop: somebody, or the action itself, refused.
  // notify::kGoOn: nobody answered, also when there is no such action. `sender` may be null.
  virtual int validateAction(const wchar_t* name, IActionSender* sender) = 0;
  virtual int processAction(const wchar_t* name, IActionSender* sender) = 0;
};

}  // namespace corvix
