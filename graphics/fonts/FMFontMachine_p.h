// The library's font machine, one for the process.
#pragma once

#include "core/baselib/objects/Ref.h"
#include "core/baselib/objects/Singleton.h"
#include "graphics/fonts/FontFinder.h"

#include <vector>

namespace corvix {

// The creators that modules declare, in their order, as a layer above finds them. Made when they are asked for the
// first time and kept until `forget`.
class IDeclaredFontCreators {
 public:
  virtual i32 count() = 0;

  // Null when it cannot be made, or its declaration says that it has nothing for such a request (null: any).
  virtual IFMFontCreator* creatorFor(i32 index, const FontRequest* request) = 0;
  virtual void forget() noexcept = 0;

 protected:
  ~IDeclaredFontCreators() = default;
};

// Stays the caller's.
void setDeclaredFontCreators(IDeclaredFontCreators* creators) noexcept;

class FMFontMachine final : public IFMFontMachine, public IFMFontChooser, public IBSingleton {
  CORVIX_IDENTITY(FMFontMachine, 0x35F7C1D8, 0x4B609AE2, 0x9D482B7F, 0xE6A10C53, IFMFontMachine, IFMFontChooser,
                  IBSingleton)

 public:
  // The machine of the process, made if there is none; it lasts as long as somebody holds it. [any thread]
  static Ref<FMFontMachine> shared();

  FMFontMachine();
  ~FMFontMachine() override;

  IFMFont* createFont(const wchar_t* family) override;
  void addCreator(IFMFontCreator* creator) override;
  IFMFont* createFontFor(const FontRequest& request) override;
  IFMFont* fontWithGlyph(u32 codePoint, IFMFont* like) override;
  bool removeCreator(IFMFontCreator* creator) override;

  // Text holds it for a moment, on whichever thread it is drawn.
  void addRef() override;
  bool release() override;

 private:
  using Creators = std::vector<Ref<IFMFontCreator>, HeapAllocator<Ref<IFMFontCreator>>>;

  // A creator that is being asked.
  struct Turn {
    IFMFontCreator* creator;
    const Turn* outer;
  };

  // The first font that `ask` gets from a creator.
  template <class Ask>
  IFMFont* askAll(const FontRequest* request, Ask askIt);

  const Turn* turns_ = nullptr;
  Creators added_;  // the last is asked first
  Creators own_;    // in the order in which they are asked
};

}  // namespace corvix
