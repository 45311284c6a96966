#include "tools/xmlbinc/CommandLine.h"

#include "tools/xmlbinc/BlockReader.h"
#include "tools/xmlbinc/BlockWriter.h"
#include "tools/xmlbinc/DescriptorCheck.h"
#include "tools/xmlbinc/Files.h"
#include "tools/xmlbinc/HeaderWriter.h"
#include "tools/xmlbinc/InputError.h"
#include "tools/xmlbinc/Limits.h"
#include "tools/xmlbinc/PluginAttributes.h"
#include "tools/xmlbinc/ResourceFile.h"
#include "tools/xmlbinc/SourceText.h"
#include "tools/xmlbinc/Unicode.h"
#include "tools/xmlbinc/XmlReader.h"
#include "tools/xmlbinc/XmlWriter.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <istream>
#include <iterator>
#include <new>
#include <ostream>
#include <random>

namespace corvix::xmlbinc {

namespace {

constexpr const char* kStandardStream = "-";

struct Options {
  std::string input;
  std::string output;
  std::string header;
  std::string resourceFor;
  std::vector<std::string> set;
  std::vector<std::string> templates;
  bool decompile = false;
  bool check = false;
  bool warningsAsErrors = false;
  bool newIdentifier = false;
};

class Program {
 public:
  Program(const Options& options, const Streams& streams) : options_(options), streams_(streams) {}

  ExitCode compile() {
    Tree tree;
    std::vector<NamedTree> templates;
    if (!compile(options_.input, {}, tree)) return failed();
    for (const auto& [name, file] : pairs(options_.templates)) {
      if (!compile(file, name, templates.emplace_back(NamedTree{toUtf16(name), {}}).tree)) return failed();
    }
    if (options_.output.empty()) return kDone;
    if (!options_.set.empty()) tree = withPluginAttributes(tree, settings());
    write(options_.resourceFor.empty() ? writeBlock(tree) : writeResourceFile(tree, options_.resourceFor, templates));
    return kDone;
  }

  ExitCode decompile() {
    try {
      const std::string bytes = read(options_.input, kMaxBlockBytes);
      const Block block = readBlock(bytes);
      const std::string xml = writeXml(block.tree);
      if (block.size < bytes.size()) {
        streams_.err << place(block.size) << "warning: " << bytes.size() - block.size
                     << " bytes behind the root are left out\n";
      }
      write(xml);
      return kDone;
    } catch (const InputError& error) {
      streams_.err << place(error.offset()) << error.what() << '\n';
      return kBadInput;
    }
  }

 private:
  /// A file's tree, which is a template when a resource is named; false, with what is wrong with it said.
  bool compile(const std::string& file, const std::string& resource, Tree& tree) const {
    SourceText source;
    try {
      source.load(read(file, kMaxXmlBytes));
      tree = readXml(source);
      // Whatever compiles can be turned back, so what cannot is refused now.
      writeXml(tree);
      const Form* form = resource.empty() ? &formOf(tree) : formOf(resource);
      const bool isSpotless = !options_.check || form == nullptr || report(file, check(tree, *form), source);
      if (!isSpotless && options_.warningsAsErrors) return false;
      if (resource.empty() && !options_.header.empty()) writeFile(options_.header, writeHeader(tree, source, file));
      return true;
    } catch (const InputError& error) {
      streams_.err << place(file, source, error.offset()) << error.what() << '\n';
      return false;
    }
  }

  static std::vector<std::pair<std::string, std::string>> pairs(const std::vector<std::string>& texts) {
    std::vector<std::pair<std::string, std::string>> all;
    for (const std::string& one : texts) {
      const std::size_t equals = one.find('=');
      all.emplace_back(one.substr(0, equals), one.substr(equals + 1));
    }
    return all;
  }

  NamedValues settings() const {
    NamedValues values;
    for (const auto& [name, value] : pairs(options_.set)) values.emplace_back(toUtf16(name), toUtf16(value));
    return values;
  }

  ExitCode failed() const {
    if (!options_.output.empty() && options_.output != kStandardStream) removeStaleBlock(options_.output);
    return kBadInput;
  }

  std::string read(const std::string& file, std::size_t limit) const {
    if (file != kStandardStream) return readFile(file, limit);
    return {std::istreambuf_iterator<char>(streams_.in), std::istreambuf_iterator<char>()};
  }

  void write(const std::string& bytes) const {
    if (options_.output != kStandardStream) return writeFile(options_.output, bytes);
    streams_.out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!streams_.out.flush()) throw std::runtime_error("standard output cannot be written");
  }

  /// True if there are no warnings.
  bool report(const std::string& file, const std::vector<Warning>& warnings, const SourceText& source) const {
    for (const Warning& warning : warnings) {
      streams_.err << place(file, source, warning.offset) << "warning: " << warning.message << '\n';
    }
    if (!warnings.empty() && options_.warningsAsErrors) {
      streams_.err << shown(file) << ": warnings count as errors: " << warnings.size() << '\n';
    }
    return warnings.empty();
  }

  static std::string place(const std::string& file, const SourceText& source, std::size_t offset) {
    const Position position = source.locate(offset);
    return shown(file) + ':' + std::to_string(position.line) + ':' + std::to_string(position.column) + ": ";
  }

  std::string place(std::size_t offset) const {
    return shown(options_.input) + ": byte " + std::to_string(offset) + ": ";
  }

  static std::string shown(const std::string& file) { return file == kStandardStream ? "<standard input>" : file; }

  const Options& options_;
  const Streams& streams_;
};

// Four words of the system's randomness, as both a descriptor and the code spell them.
void printNewIdentifier(std::ostream& out) {
  std::random_device random;
  std::string words;
  for (int i = 0; i < 4; ++i) {
    char word[16];
    std::snprintf(word, sizeof word, "%s0x%08X", i ? ", " : "", static_cast<unsigned>(random()));
    words += word;
  }
  out << "In plugin.xml:  GUID=\"" << words << "\"\nIn the class:   CORVIX_IDENTITY(MyClass, " << words
      << ", corvix::IBTransportable)\n";
}

// What readers of modules look for: capitals, digits and "_".
std::string isResourceAndFile(const std::string& text) {
  constexpr std::size_t kLongest = 32;
  const std::size_t equals = text.find('=');
  const std::string name = text.substr(0, equals);
  const bool isName = !name.empty() && name.size() <= kLongest && name != "PLUGININFO" &&
                      name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") == name.npos;
  return isName && equals != text.npos && equals + 1 < text.size() ? ""
                                                                   : "is not a resource's name, = and a file: " + text;
}

void describe(CLI::App& app, Options& options) {
  // A path that begins with a slash is a path.
  app.allow_windows_style_options(false);
  app.add_option("INPUT", options.input, "The file to read; - for standard input")->type_name("FILE");
  auto* output =
      app.add_option("-o,--output", options.output, "The file to write; - for standard output")->type_name("FILE");
  auto* decompile = app.add_flag("-d,--decompile", options.decompile, "Turn a block back into XML");
  decompile->needs(output);
  auto* check =
      app.add_flag("--check", options.check,
                   "Warn of what a plug-in descriptor or a template should not have; without -o, nothing is written");
  check->excludes(decompile);
  app.add_flag("--warnings-as-errors", options.warningsAsErrors, "With --check: fail, and write nothing, on a warning")
      ->needs(check);
  app.add_flag("--new-identifier", options.newIdentifier,
               "Print four fresh random words, for a module, an interface or a class, and do nothing else");
  app.add_option("--resource-for", options.resourceFor,
                 "Write a resource file for this module: the block, and version information from the descriptor")
      ->type_name("MODULE.dll")
      ->needs(output)
      ->excludes(decompile);
  app.add_option("--template", options.templates,
                 "Put a template, checked as what its name says, into the resource file as well; may be repeated")
      ->type_name("MENUTEMPL=FILE")
      ->take_all()
      ->allow_extra_args(false)
      ->check(isResourceAndFile)
      ->needs("--resource-for");
  app.add_option("--header", options.header,
                 "Write a C++ header with what is declared, for the module's code, in addition")
      ->type_name("FILE")
      ->excludes(decompile);
  app.add_option("--set", options.set, "Give the Plugin element of the output this attribute; may be repeated")
      ->type_name("NAME=VALUE")
      ->take_all()
      ->allow_extra_args(false)
      ->check([](const std::string& text) {
        return isXmlName(text.substr(0, text.find('='))) && text.find('=') != text.npos ? ""
                                                                                        : "is not NAME=VALUE: " + text;
      })
      ->needs(output)
      ->excludes(decompile);
  app.set_version_flag("--version", "xmlbinc " XMLBINC_VERSION);
  app.footer(
      "Examples:\n"
      "  xmlbinc plugin.xml -o plugin.bin            compile\n"
      "  xmlbinc --check plugin.xml                  only look for mistakes\n"
      "  xmlbinc --check plugin.xml -o plugin.bin    look for mistakes and compile\n"
      "  xmlbinc -d plugin.bin -o -                  show a block as XML\n"
      "  xmlbinc plugin.xml -o my.res --resource-for my.dll    for windres -J res -O coff\n"
      "  xmlbinc plugin.xml -o my.res --resource-for my.dll --template MENUTEMPL=menu.xml    with a menu in it\n"
      "\n"
      "Exit codes: 0 done, 1 bad input (said on standard error; no output is left), 2 bad usage.");
}

ExitCode runChecked(std::vector<std::string> arguments, const Streams& streams) {
  Options options;
  CLI::App app("Compiles XML, such as plug-in descriptors, to binary blocks and back.", "xmlbinc");
  describe(app, options);
  try {
    std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
    app.parse(arguments);
    if (options.newIdentifier) {
      printNewIdentifier(streams.out);
      return kDone;
    }
    if (options.input.empty()) throw CLI::RequiredError("INPUT");
    if (options.output.empty() && options.header.empty() && !options.check) {
      throw CLI::RequiredError("-o OUTPUT or --check");
    }
    if (options.output != kStandardStream && sameFile(options.input, options.output)) {
      throw CLI::ValidationError("the output would overwrite the input");
    }
  } catch (const CLI::ParseError& error) {
    return app.exit(error, streams.out, streams.err) == 0 ? kDone : kBadUsage;
  }
  Program program(options, streams);
  return options.decompile ? program.decompile() : program.compile();
}

}  // namespace

int run(std::vector<std::string> arguments, const Streams& streams) {
  try {
    return runChecked(std::move(arguments), streams);
  } catch (const std::bad_alloc&) {
    streams.err << "xmlbinc: out of memory\n";
  } catch (const std::exception& error) {
    streams.err << "xmlbinc: " << error.what() << '\n';
  }
  return kBadInput;
}

}  // namespace corvix::xmlbinc
