// What the library is put together from: alone it knows all layers.
#include "core/suppliers/KFileSupplier_p.h"
#include "core/suppliers/KHTTPSupplier_p.h"
#include "core/suppliers/KIStreamSupplier_p.h"
#include "graphics/creators/QuillCreators_p.h"
#include "graphics/fonts/FMFontMachine_p.h"
#include "graphics/fonts/FontSettings_p.h"
#include "graphics/quality/QualityListener_p.h"
#include "library/DeclaredFonts_p.h"
#include "shell/Shell.h"
#include "shell/modules/KClassFactoryLocal_p.h"

namespace corvix {

namespace {

// From the first creator on, drawing follows the user's settings.
template <class Creator>
IBSmartObject* createForDrawing() {
  watchQuality(*IShell::getInstance()->settings());
  return new Creator;
}

// The one that drawing has, too; the shell keeps it. Fonts follow the user's settings, and declared creators are asked.
IBSmartObject* createFontMachine() {
  watchFontSettings(*IShell::getInstance()->settings());
  offerDeclaredFonts();
  return FMFontMachine::shared().detach();
}

constexpr FactoryRow kObjects[] = {
    {L"AGDC.Memory", createForDrawing<QuillMemoryDCCreator>},
    {L"AGDC.Screen", createForDrawing<QuillScreenDCCreator>},
    {L"IFMFontMachine.Instance", createFontMachine},
    {L"Supplier.file", create<KFileSupplier>},
    {L"Supplier.ftp", create<KHTTPSupplier>},
    {L"Supplier.http", create<KHTTPSupplier>},
    {L"Supplier.istream", create<KIStreamSupplier>},
};

// Runs while the library is loaded, before anybody can ask.
[[maybe_unused]] const bool handedOver = (setLibraryObjects(kObjects), true);

}  // namespace

}  // namespace corvix
