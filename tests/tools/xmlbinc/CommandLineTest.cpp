#include "tools/xmlbinc/CommandLine.h"

#include "tests/tools/xmlbinc/XmlbincTesting.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <regex>
#include <set>
#include <sstream>

namespace corvix::xmlbinc {
namespace {

namespace fs = std::filesystem;

const std::string kGood = "<CorvixRC Version='1.00'><Plugin GUID='1,2,3,4' Manufacturer='M'/></CorvixRC>";
const std::string kSet = "<CorvixRC Version='1.00'><Plugin Manufacturer='N' SdkBits='32' GUID='1,2,3,4'/></CorvixRC>";
const std::string kDoubtful = "<CorvixRC Version='1.00'/>";
const std::string kWrong = "<CorvixRC>\n<Plugin></CorvixRC>";

class CommandLine : public testing::Test {
 protected:
  CommandLine() { fs::create_directories(folder_); }
  ~CommandLine() override { fs::remove_all(folder_); }

  /// The name has a blank, and letters that no single code page has.
  std::string path(const std::string& name) const {
    const std::u8string text = (folder_ / name).u8string();
    return {text.begin(), text.end()};
  }
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
  }
  std::string read(const std::string& name) const {
    std::ifstream file(folder_ / name, std::ios::binary);
    return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "none";
  }
  std::size_t fileCount() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
  }

  int call(const std::vector<std::string>& arguments, const std::string& input = "") {
    std::istringstream in(input);
    std::ostringstream out;
    std::ostringstream err;
    const int code = run(arguments, {in, out, err});
    out_ = out.str();
    err_ = err.str();
    return code;
  }

  fs::path folder_ = (fs::temp_directory_path() / u8"xmlbinc test \u00E9\u2603 ") +=
      std::to_string(std::random_device{}());
  std::string out_;
  std::string err_;
};

TEST_F(CommandLine, LeavesAnOutputOnlyForGoodInput) {
  struct Row {
    const char* name;
    std::string input;
    const char* options;
    std::string before;  ///< what the output holds from an earlier run
    int code;
    std::string output, error;
  };
  const std::string block = compiled(kGood);
  const std::string resource = resourceFor("m.dll", kGood);
  const std::string unregistered = "IN:1:1: warning: CorvixRC without Plugin: nothing will be registered\n";
  const std::string counted = unregistered + "IN: warnings count as errors: 1\n";
  const std::string noBlock = "IN: byte 0: no block: it does not begin with \"xmlbin\"\n";
  const std::string unclosed =
      "IN:2:9: closing tag of \"CorvixRC\", but \"Plugin\", opened in line 2, is to be closed first\n";
  const std::string rest =
      "IN: byte " + std::to_string(block.size()) + ": warning: 4 bytes behind the root are left out\n";
  const Row rows[] = {
      {"replaces", kGood, "", "old", kDone, block, ""},
      {"checks and compiles", kDoubtful, "--check", "none", kDone, compiled(kDoubtful), unregistered},
      {"warnings that count", kDoubtful, "--check --warnings-as-errors", "none", kBadInput, "none", counted},
      {"wrong", kWrong, "", "none", kBadInput, "none", unclosed},
      {"wrong, after it was right", kWrong, "", block, kBadInput, "none", unclosed},
      {"wrong, where something else is", kWrong, "", "a letter", kBadInput, "a letter", unclosed},
      {"makes a resource file", kGood, "--resource-for m.dll", "old", kDone, resource, ""},
      {"sets attributes", kGood, "--set Manufacturer=N --set SdkBits=32", "none", kDone, compiled(kSet), ""},
      {"wrong, after a resource file", kWrong, "--resource-for m.dll", resource, kBadInput, "none", unclosed},
      {"decompiles", block + "rest", "-d", "none", kDone, decompiled(block), rest},
      {"decompiles no block", kGood, "-d", "kept", kBadInput, "kept", noBlock}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    write("in", row.input);
    fs::remove(folder_ / "out");
    if (row.before != "none") write("out", row.before);
    std::istringstream options(row.options);
    std::vector<std::string> arguments{std::istream_iterator<std::string>(options), {}};
    arguments.insert(arguments.end(), {path("in"), "-o", path("out")});
    EXPECT_EQ(call(arguments), row.code);
    EXPECT_EQ(read("out"), row.output);
    EXPECT_EQ(fileCount(), row.output == "none" ? 1U : 2U) << "a temporary file was left";
    std::string error = row.error;
    for (std::size_t i = error.find("IN"); i != error.npos; i = error.find("IN", i)) error.replace(i, 2, path("in"));
    EXPECT_EQ(err_, error);
    EXPECT_EQ(out_, "");
  }
}

TEST_F(CommandLine, PutsTemplatesIntoResourceFiles) {
  struct Row {
    std::string menu, resource, said;
  };
  const std::string right = "<CorvixRC Version='1.0'><Menu Name='M'/></CorvixRC>", menu = path("menu");
  const Row rows[] = {
      {right, resourceFor("m.dll", kGood, right), ""},
      {"<CorvixRC Version='1.0'>\n<Menu/></CorvixRC>", "none",
       menu + ":2:1: warning: Menu without Name: no one can ask for it\n" + menu + ": warnings count as errors: 1\n"},
      {"<CorvixRC>", "none", menu + ":1:1: the element \"CorvixRC\" is not closed\n"},
  };
  write("in", kGood);
  for (const Row& row : rows) {
    write("menu", row.menu);
    call({"--check", "--warnings-as-errors", path("in"), "-o", path("out"), "--resource-for", "m.dll", "--template",
          "MENUTEMPL=" + menu});
    EXPECT_EQ(read("out"), row.resource) << row.menu;
    EXPECT_EQ(err_, row.said);
  }
}

TEST_F(CommandLine, ChecksWithoutWriting) {
  write("in", kDoubtful);
  EXPECT_EQ(call({"--check", path("in")}), kDone);
  EXPECT_NE(err_, "");
  EXPECT_EQ(fileCount(), 1U);
}

TEST_F(CommandLine, ReadsAndWritesStandardStreams) {
  EXPECT_EQ(call({"-", "-o", "-"}, kGood), kDone);
  EXPECT_EQ(out_, compiled(kGood));
  EXPECT_EQ(call({"--decompile", "-", "--output", "-"}, out_), kDone);
  EXPECT_EQ(out_, decompiled(compiled(kGood)));
  EXPECT_EQ(call({"-", "-o", "-"}, kWrong), kBadInput);
  EXPECT_EQ(out_, "");
  EXPECT_TRUE(err_.starts_with("<standard input>:2:9: ")) << err_;
}

TEST_F(CommandLine, NewIdentifiersAreFreshInBothSpellings) {
  std::set<std::string> seen;
  const std::regex form(
      "In plugin.xml:  GUID=\"((?:0x[0-9A-F]{8}(?:, )?){4})\"\n"
      "In the class:   CORVIX_IDENTITY\\(MyClass, (.*), corvix::IBTransportable\\)\n");
  for (int time = 0; time < 20; ++time) {
    ASSERT_EQ(call({"--new-identifier"}), kDone);
    std::smatch found;
    ASSERT_TRUE(std::regex_match(out_, found, form)) << out_;
    EXPECT_EQ(found[1], found[2]);
    for (int word = 0; word < 4; ++word)
      EXPECT_TRUE(seen.insert(found[1].str().substr(static_cast<std::size_t>(12 * word), 10)).second);
  }
}

TEST_F(CommandLine, ExplainsWrongUse) {
  write("in", kGood);
  struct Row {
    std::vector<std::string> arguments;
    int code;
    const char* error;
  };
  const Row rows[] = {
      {{}, kBadUsage, "INPUT is required"},
      {{path("in")}, kBadUsage, "-o OUTPUT or --check is required"},
      {{path("in"), "-o", path("in")}, kBadUsage, "the output would overwrite the input"},
      {{"-d", "--check", path("in"), "-o", "x"}, kBadUsage, "--check"},
      {{"--warnings-as-errors", path("in"), "-o", "x"}, kBadUsage, "--check"},
      {{path("in"), "-o", "x", "--set", "1=2"}, kBadUsage, "is not NAME=VALUE: 1=2"},
      {{path("in"), "-o", "x", "--resource-for", "m", "--template", "menu=x"}, kBadUsage, "is not a resource's name"},
      {{"--nonsense", path("in")}, kBadUsage, "--nonsense"},
      {{path("missing"), "-o", path("out")}, kBadInput, "missing: cannot be opened"},
      {{path(""), "-o", path("out")}, kBadInput, "is a directory"},
      {{path("in"), "-o", path("no/such/folder")}, kBadInput, "no/such/folder: cannot be written"},
      {{path("in"), "-o", path("")}, kBadInput, "is a directory"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(call(row.arguments), row.code) << row.error;
    EXPECT_NE(err_.find(row.error), std::string::npos) << err_;
    EXPECT_EQ(fileCount(), 1U) << row.error;
    EXPECT_EQ(read("in"), kGood) << row.error;
  }
}

}  // namespace
}  // namespace corvix::xmlbinc
