#include "core/baselib/streams/TempStorage.h"
#include "core/baselib/system/Exception.h"
#include "shell/Plugin.h"
#include "tests/support/CloseBehind.h"

namespace {

// The library throws.
void closeInVain() {
  corvix::BTempStorage storage;
  storage.open();
  corvix::testing_support::closeBehindItsBack(storage);
  storage.close();
}

}  // namespace

CORVIX_PLUGIN({L"Faulty.throws_exception",
               []() -> corvix::IBSmartObject* {
                 closeInVain();
                 return nullptr;
               }},
              {L"Faulty.decimal", []() -> corvix::IBSmartObject* {
                 try {
                   closeInVain();
                 } catch (corvix::SException*) {
                   return new corvix::BSmartObject;
                 }
                 return nullptr;
               }})
