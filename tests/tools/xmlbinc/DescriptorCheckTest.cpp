#include "tools/xmlbinc/DescriptorCheck.h"

#include "tests/tools/xmlbinc/XmlbincTesting.h"

#include <gtest/gtest.h>
#include <vector>

namespace corvix::xmlbinc {
namespace {

using Lines = std::vector<std::string>;

Lines warnings(const std::string& xml) {
  SourceText source;
  source.load(xml);
  Lines lines;
  const Tree tree = readXml(source);
  for (const Warning& warning : check(tree, formOf(tree))) {
    lines.push_back(at(source, warning.offset) + warning.message);
  }
  return lines;
}

/// The content in a plug-in that is right, starting at 2:1.
std::string plugin(const std::string& content) {
  return "<CorvixRC Version='1.00'><Plugin GUID='1,2,3,4' Manufacturer='M'>\n" + content + "</Plugin></CorvixRC>";
}

TEST(DescriptorCheck, HasNothingAgainstARightDescriptor) {
  const std::string right = plugin(R"(<!-- comment -->
    <Interface Name="Supplier.http" GUID="0x1C603B15, 0x450A378B, 0xE08ACBAE, 0x85095F68" sHumanName="x"/>
    <Interface Name="Supplier.ftp" GUID="0x1C603B15, 0x450A378B, 0xE08ACBAE, 0x85095F68" Order="hight"/>
    <Interface Name="Supplier.ftp" GUID="-1,0XfF,010,4294967295 " Order="-0x10"/>
    <Setting Group="G" Item="1" Type="enum" Values="Fast|By Table" Data="By Table" Visible="List"/>
    <Setting Group="G" Item="2" Type="int" Data="four" Visible="text" path="a\b" comment="c"/>
    <Setting Group="G" Item="3" Type="string" Data="" Visible="false"/>
    <Setting Group="G" Item="4" Type="integer" Data="-2147483648" Visible="check"/>
    <Setting Group="G" Item="5" Type="integer" Data="0x7fffFFFF"/>
    <Setting Group="G" Item="6" Type="float" Data="-.5e+3"/>
    <Setting Group="H" Item="6" Type="bool" Data="true"/>
    <Requires Interface="Supplier.ftp" MinVersion="1.02.10"/>
    <Interface Name="Actions.X" GUID="1,2,3,4" Icon="x.png" Data="x" MenuText="Do &amp;it"/>
    <Menu Name="M"><Item Action="Actions.X"/>text<Setting/></Menu>)");
  EXPECT_EQ(warnings(right), Lines());
}

TEST(DescriptorCheck, WarnsOfTheEnvelope) {
  const std::vector<std::pair<std::string, Lines>> rows{
      {"<CorvixRc Version='1.00'/>",
       {"1:1: the root element is \"CorvixRc\", not \"CorvixRC\"",
        "1:1: CorvixRC without Plugin: nothing will be registered"}},
      {"<CorvixRC Version='1.00'>\n<plugin/></CorvixRC>",
       {"1:1: CorvixRC without Plugin: nothing will be registered",
        "2:1: unknown element \"plugin\" in \"CorvixRC\"; did you mean \"Plugin\"?"}},
      {"<CorvixRC>\n<Plugin/></CorvixRC>",
       {"1:1: CorvixRC without Version: \"1.00\" is the current one",
        "2:1: Plugin without GUID: the plug-in will not be registered",
        "2:1: Plugin without Manufacturer: users cannot tell whose plug-in it is"}},
      {"<CorvixRC Version='1.00'><Plugin GUID='1,2,3,4' Manufacturer='M'/>\n<Plugin/>\n<Setting/>x</CorvixRC>",
       {"2:1: another \"Plugin\"; only the first is read",
        "3:1: \"Setting\" does not belong in \"CorvixRC\" and is ignored there",
        "3:11: the text in \"CorvixRC\" is ignored"}},
  };
  for (const auto& [xml, expected] : rows) EXPECT_EQ(warnings(xml), expected) << xml;
}

TEST(DescriptorCheck, WarnsOfWhatAPluginHolds) {
  const std::string type = "<Setting Group='G' Item='I' Type=";
  const std::string few = " can be read, four are needed, separated by commas; without them the entry is skipped";
  const std::string noInteger =
      " is not a 32-bit number, decimal, or hexadecimal after \"0x\", as the type \"integer\" needs it";
  const std::vector<std::pair<std::string, Lines>> rows{
      {"<Interface Name='N'/>", {"2:1: Interface without GUID: the interface will be skipped"}},
      {"<Interface GUID='1,2,3,4'/>", {"2:1: Interface without Name: no one can ask for the interface"}},
      {"<Interface Name='' GUID='1,2,3,4'/>", {"2:12: Name is empty"}},
      {"<Interface Name='N' GUID='1,2,3'/>", {"2:21: GUID \"1,2,3\": 3 numbers" + few}},
      {"<Interface Name='N' GUID='1 ,2,3,4'/>",
       {"2:21: GUID \"1 ,2,3,4\": 1 number" + few + " (no blank may stand before a comma)"}},
      {"<Interface Name='N' GUID='{x}'/>", {"2:21: GUID \"{x}\": 0 numbers" + few}},
      {"<Interface Name='N' GUID='1,2,3,4,5'/>",
       {"2:21: GUID \"1,2,3,4,5\": what follows the fourth number is ignored"}},
      {"<Interface Name='N' GUID='1,0x100000000,-2147483649,99999999999999999999'/>",
       {"2:21: GUID \"1,0x100000000,-2147483649,99999999999999999999\": number 2 does not fit 32 bits",
        "2:21: GUID \"1,0x100000000,-2147483649,99999999999999999999\": number 3 does not fit 32 bits",
        "2:21: GUID \"1,0x100000000,-2147483649,99999999999999999999\": number 4 does not fit 32 bits"}},
      {"<Interface Name='N' GUID='1,2,3,-1'/>\n<Interface Name='N' GUID='0x1, 02, 3, 0xFFFFFFFF'/>",
       {"3:1: the interface \"N\" is declared twice with the same identifier"}},
      {"<Interface Name='N' GUID='1,2,3,4' Order='High' sHumanname='x'/>",
       {"2:36: Order \"High\" is neither \"Low\", \"Default\" or \"Hight\" nor a number; did you mean \"Hight\"?",
        "2:49: unknown attribute \"sHumanname\" of Interface; did you mean \"sHumanName\"?"}},
      {"<Interface Name='N' GUID='1,2,3,4'>\n<Setting/></Interface>",
       {"3:1: \"Setting\" does not belong in \"Interface\" and is ignored there"}},
      {"<Settings/>", {"2:1: unknown element \"Settings\" in \"Plugin\"; did you mean \"Setting\"?"}},
      {"<Interface Name='N' GUID='1,2,3,4' name='a' Odrer='b' sHumanNam='c' Nam='d' GIUD='e' Ordner='f'/>",
       {"2:36: unknown attribute \"name\" of Interface; did you mean \"Name\"?",
        "2:45: unknown attribute \"Odrer\" of Interface",
        "2:55: unknown attribute \"sHumanNam\" of Interface; did you mean \"sHumanName\"?",
        "2:69: unknown attribute \"Nam\" of Interface; did you mean \"Name\"?",
        "2:77: unknown attribute \"GIUD\" of Interface",
        "2:86: unknown attribute \"Ordner\" of Interface; did you mean \"Order\"?"}},
      {"<Requires Interfase='N' MinVersion='1.'/>",
       {"2:1: Requires without Interface: nothing will be required",
        "2:11: unknown attribute \"Interfase\" of Requires; did you mean \"Interface\"?",
        "2:25: MinVersion \"1.\" is not numbers with dots between, such as \"1.2\""}},
      {"<Setting Item='' Type='string'/>", {"2:1: Setting without Group: it counts as empty", "2:10: Item is empty"}},
      {"<Setting Group='G' Item='I'/>", {"2:1: Setting without Type: the value will be kept as text"}},
      {type + "'boolean'/>",
       {"2:29: unknown setting type \"boolean\", the value will be kept as text; did you mean \"bool\"?"}},
      {type + "'bool'/>", {"2:1: a setting of type \"bool\" without Data has no default"}},
      {type + "'bool' Data='True'/>",
       {"2:41: Data \"True\" is not \"true\" or \"false\", in small letters, as the type \"bool\" needs it"}},
      {type + "'integer' Data='2147483648'/>", {"2:44: Data \"2147483648\"" + noInteger}},
      {type + "'integer' Data='12px'/>", {"2:44: Data \"12px\"" + noInteger}},
      {type + "'integer' Data='08'/>", {"2:44: Data \"08\"" + noInteger}},
      {type + "'float' Data='1,5'/>", {"2:42: Data \"1,5\" is not a decimal number, as the type \"float\" needs it"}},
      {type + "'float' Data='nan'/>", {"2:42: Data \"nan\" is not a decimal number, as the type \"float\" needs it"}},
      {type + "'enum' Data='a'/>", {"2:1: a setting of type \"enum\" needs Values, such as \"Fast|Normal|Best\""}},
      {type + "'enum' Values='Fast|Best' Data='best'/>",
       {"2:60: the enum's Data \"best\" is not among its Values \"Fast|Best\"; did you mean \"Best\"?"}},
      {type + "'enum' Values='a||a| b' Data='a'/>",
       {"2:41: Values \"a||a| b\": an item is empty", "2:41: Values \"a||a| b\": \"a\" is given twice",
        "2:41: Values \"a||a| b\": the blanks of \" b\" belong to the item"}},
      {type + "'string' Visible='list'/>",
       {"2:43: Visible \"list\" is none of \"check\", \"List\", \"text\" and \"false\"; did you mean \"List\"?"}},
      {type + "'string'/>\n<Setting Group='g' Item='i' Type='int'/>",
       {"3:1: the setting \"i\" of the group \"g\" is declared twice (capital and small letters count as the "
        "same)"}},
  };
  for (const auto& [content, expected] : rows) EXPECT_EQ(warnings(plugin(content)), expected) << content;
}

TEST(DescriptorCheck, WarnsOfFamiliesAndTemplates) {
  const auto face = [](const std::string& rest) { return plugin("<Interface GUID='1,2,3,4' " + rest + "/>"); };
  const auto menu = [](const std::string& rest) {
    return "<CorvixRC Version='1.00'><Menu Name='M'><Popup Id='P'>\n" + rest + "</Popup></Menu></CorvixRC>";
  };
  const std::string when = " is not words with \"and\" between, such as \"document.paged and !busy\"";
  const std::vector<std::pair<std::string, Lines>> rows{
      {face("Name='DocFormat.Png' Pattern='*.png;x?' Magic='89504e47;47..46' Access='rw'"), {}},
      {face("Name='DocFormat.Png' Pattern='*.png; *.b' Magic='895' Acces='r'"),
       {"2:1: Interface without Access: no one knows whether it reads or writes: \"r\", \"w\" or \"rw\"",
        "2:48: Pattern \"*.png; *.b\" is not file names with * and ?, such as \"*.jpg;*.jpeg\"",
        "2:69: Magic \"895\" is not 1 to 64 bytes of two hexadecimal digits each, such as \"89504E47\"",
        "2:81: unknown attribute \"Acces\" of Interface; did you mean \"Access\"?"}},
      {face("Name='DocFormat.Png' Magic='89;....' Access='r'"),
       {"2:48: Magic \"89;....\" is not 1 to 64 bytes of two hexadecimal digits each, such as \"89504E47\""}},
      {face("Name='DocFormat.' Access='wr'"),
       {"2:27: Name \"DocFormat.\" lacks what follows the dot",
        "2:45: Access \"wr\" is none of \"r\", \"w\", \"rw\"; did you mean \"r\"?"}},
      {face("Name='Docformat.Png'"),
       {"2:27: Name \"Docformat.Png\" is not found by who looks for \"DocFormat.\": letter case counts"}},
      {face("Name='Panel.Pages' Text='Pages' Side='left' Size='180' Shown='true' When='document.paged and !x'"), {}},
      {face("Name='Panel.Pages' Side='middle' Size='wide' Shown='1'/>\n<Interface GUID='1,2,3,5' "
            "Name='DocumentView.Text' For='a b'"),
       {"2:46: Side \"middle\" is none of \"left\", \"right\", \"top\", \"bottom\"",
        "2:60: Size \"wide\" is not a whole number", "2:72: Shown \"1\" is none of \"true\", \"false\"",
        "3:52: For \"a b\"" + when}},
      {face("Name='Supplier.Zip'"),
       {"2:27: the scheme of \"Supplier.Zip\" has capital letters: suppliers are asked for in small ones"}},
      {menu("<Item Action='Actions.A' Key='Ctrl+Plus' When='a and !b'/><Item Action='Actions.A' Key='ctrl+plus'/>"),
       {}},
      {menu("<Item Action='A' Key='Ctrl+'/>\n<Item Key='Strg+A' When='a b'/><Item Action='Actions.A' "
            "Key='Ctrl+PgUpp'/>\n<Popup Order='x' When='a and'/>"),
       {"2:7: Action \"A\" is not \"Actions.\" and a name",
        "2:18: Key \"Ctrl+\" is not a key behind Ctrl+, Alt+ or Shift+, such as \"Ctrl+Plus\"",
        "3:1: Item without Action: it is left out",
        "3:7: Key \"Strg+A\" is not a key behind Ctrl+, Alt+ or Shift+, such as \"Ctrl+Plus\"",
        "3:20: When \"a b\"" + when,
        "3:57: Key \"Ctrl+PgUpp\" is not a key behind Ctrl+, Alt+ or Shift+, such as \"Ctrl+Plus\"; did you mean "
        "\"PgUp\"?",
        "4:1: Popup without Id: it is left out", "4:8: Order \"x\" is not a whole number",
        "4:18: When \"a and\" ends too early"}},
      {menu("<Item Action='Actions.A' Key='F5'/>\n<Item Action='Actions.B' Key='f5'/><Menu/><item/>"),
       {"3:26: the key \"f5\" belongs to an item before this one",
        "3:36: \"Menu\" does not belong in \"Popup\" and is ignored there",
        "3:43: unknown element \"item\" in \"Popup\"; did you mean \"Item\"?"}},
      {"<CorvixRC Version='1.00'><View Name='V' For='!'/>\n<Panel Name='P' Text='t' Side='Left' "
       "Size='wide'/></CorvixRC>",
       {"1:41: For \"!\"" + when,
        "2:26: Side \"Left\" is none of \"left\", \"right\", \"top\", \"bottom\"; did you mean \"left\"?",
        "2:38: Size \"wide\" is not a whole number"}},
      {"<CorvixRC Version='1.00'><Language Code='de-AT' Name='n'>\n<Text From='a' To='b'/><Text From='a' In='c' "
       "To='d'/>"
       "</Language></CorvixRC>",
       {}},
      {"<CorvixRC Version='1.00'><Language Code='de' Name='n'>\n<Text From='%1 of %2' To='%2: %1 %'/>"
       "<Text From='%1' To='%1%1'/><Text From='%1 of %2' In='c' To='%1'/><Text From='a' "
       "To='%1'/></Language></CorvixRC>",
       {"2:38: the translation \"%1%1\" has other places (\"%1\") than \"%1\", and is not used",
        "2:65: the translation \"%1\" has other places (\"%1\") than \"%1 of %2\", and is not used",
        "2:103: the translation \"%1\" has other places (\"%1\") than \"a\", and is not used"}},
      {"<CorvixRC Version='1.00'><Language Code='de_'>\n<Text From='a' To=''/><Text From='a' To='b'/><Text/></Language>"
       "</CorvixRC>",
       {"1:26: Language without Name: users are shown its code",
        "1:36: Code \"de_\" is no language's, such as \"de\" or \"de-AT\"", "2:16: To is empty",
        "2:23: the text \"a\" is translated before; only the first is read", "2:46: Text without From: it is left out",
        "2:46: Text without To: it is left out"}},
  };
  for (const auto& [xml, expected] : rows) EXPECT_EQ(warnings(xml), expected) << xml;
}

}  // namespace
}  // namespace corvix::xmlbinc
