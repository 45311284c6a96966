// Values for the debugger to show: printers_test.py stops where all of them stand.
#include "core/baselib/objects/Ref.h"
#include "core/baselib/text/Variant.h"
#include "core/xml/XmlNode.h"

using namespace corvix;

namespace {

class Greeter final : public BSmartObject {
  CORVIX_IDENTITY(Greeter, 0xE1A95C30, 0x7B42D86F, 0x0D93F1B7, 0x56C8204E, BSmartObject)
};

}  // namespace

[[gnu::noinline]] void allStand(const void*) { asm volatile(""); }

int main() {
  const WideString empty, text(L"Ж \"é\"\t"), longText(std::wstring(300, L'x').c_str());
  const Variant nothing{}, number(7), truth(true), fraction(0.5), words(L"words");
  const Ref<IBSmartObject> object = make<Greeter>(), none;
  const auto tree = make<XMLNodeNode>(nullptr, XmlNodeType::Element, L"Plugin");
  tree->appendChild(make<XMLNodeParam>(tree.get(), XmlNodeType::Attribute, L"Name", L"Mine").get());
  tree->appendChild(make<XMLNodeNode>(tree.get(), XmlNodeType::Element, L"Interface").get());
  allStand(&tree);
}
