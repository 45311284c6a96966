#include "graphics/fonts/FMFontMachine.h"

#include "graphics/fonts/FontSubstitutors.h"

namespace corvix {

FMFontMachine::FMFontMachine() {
  creators_.push_back(make<FakeSubstitutor>());
  creators_.push_back(make<SystemFontSubstitutor>());
}

IFMFont* FMFontMachine::createFont(const wchar_t* family) {
  const wchar_t* const name = family ? family : L"";
  for (auto creator = creators_.rbegin(); creator != creators_.rend(); ++creator) {
    if (IFMFont* font = (*creator)->createFont(name)) return font;
  }
  return nullptr;
}

void FMFontMachine::addCreator(IFMFontCreator* creator) {
  if (creator) creators_.push_back(Ref<IFMFontCreator>::share(creator));
}

}  // namespace corvix
