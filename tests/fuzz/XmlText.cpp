// The descriptor compiler: what it compiles, it writes as XML that compiles to the same block.
#include "core/baselib/objects/Ref.h"
#include "core/xml/XmlbinReader.h"
#include "tests/fuzz/Fuzz.h"
#include "tools/xmlbinc/BlockReader.h"
#include "tools/xmlbinc/BlockWriter.h"
#include "tools/xmlbinc/DescriptorCheck.h"
#include "tools/xmlbinc/InputError.h"
#include "tools/xmlbinc/SourceText.h"
#include "tools/xmlbinc/XmlReader.h"
#include "tools/xmlbinc/XmlWriter.h"

namespace corvix::fuzz {

void xmlText(Bytes bytes) {
  using namespace xmlbinc;
  SourceText source;
  Tree tree;
  try {
    source.load({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    tree = readXml(source);
  } catch (const InputError& error) {
    require(source.locate(error.offset()).line > 0, "every error has a place");
    return;
  }
  for (const Warning& warning : check(tree, formOf(tree))) source.locate(warning.offset);

  const std::string block = writeBlock(tree);
  require(readBlock(block).size == block.size(), "a block ends where its root does");
  const auto root = Ref<XMLNode>::adopt(readXmlbin(block.data(), static_cast<u32>(block.size())));
  require(static_cast<bool>(root), "the library reads what was compiled");

  SourceText again;
  again.load(writeXml(readBlock(block).tree));
  require(writeBlock(readXml(again)) == block, "a block becomes XML and the same block");
}

}  // namespace corvix::fuzz
