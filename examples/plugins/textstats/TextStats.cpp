// One object with two interfaces that know nothing of each other.
#include "descriptor.h"
#include "examples/plugins/textstats/ITextStats.h"
#include "shell/Plugin.h"

#include <cwctype>

namespace example {

class TextStats : public corvix::BSmartObject, public ITextSink, public ITextStats {
  CORVIX_IDENTITY(TextStats, 0x6F08B1D5, 0x4E93A72C, 0x9B47C08E, 0xD35216FA, corvix::BSmartObject, ITextSink,
                  ITextStats)

 public:
  void write(const wchar_t* text) override {
    for (; *text; ++text) {
      const bool isLetter = std::iswalpha(*text) != 0;
      letters_ += isLetter;
      words_ += isLetter && !insideWord_;
      insideWord_ = isLetter;
    }
  }

  corvix::u32 words() const override { return words_; }
  corvix::u32 letters() const override { return letters_; }

 private:
  corvix::u32 words_ = 0;
  corvix::u32 letters_ = 0;
  bool insideWord_ = false;
};

}  // namespace example

CORVIX_PLUGIN(corvix::rowFor<descriptor::Example_TextStats, example::TextStats>())
