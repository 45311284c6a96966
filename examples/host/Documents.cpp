#include "examples/host/Command.h"
#include "examples/host/Console.h"
#include "examples/host/ShellDisplay.h"

#include "core/baselib/objects/Ref.h"
#include "shell/documents/DocManager.h"
#include "shell/documents/Document.h"
#include "shell/documents/PagedDocument.h"
#include "shell/documents/TextSource.h"
#include "shell/services/Report.h"

#include <cmath>
#include <string>

namespace host {

using namespace corvix;

namespace {

// On the standard error, a line each.
void printReport(IDocManager& documents) {
  const IBReport* const report = documents.report();
  for (i32 i = 0; report && i < report->lineCount(); ++i)
    std::fprintf(stderr, "corvix-host: %s\n", shown(report->lineAt(i), kSentence).c_str());
}

std::string counted(u32 count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string formatOf(IPluginManager& manager, const IDocument& document) {
  const auto declared = Ref<IBCollection>::adopt(manager.findByName(document.formatName()));
  const IPluginInterface* const entry = declared ? query<IPluginInterface>(declared->item(0)) : nullptr;
  const wchar_t* const name = entry ? entry->attribute(L"sHumanName") : nullptr;
  return shown(name ? name : document.formatName());
}

// What it is and what it has, in one line.
void describe(IPluginManager& manager, IDocument& document) {
  constexpr double kMillimetresPerPoint = 25.4 / 72;
  std::string line = shown(document.title()) + ": " + formatOf(manager, document);
  double width = 0, height = 0;
  const IPagedDocument* const pages = query<IPagedDocument>(&document);
  if (pages && pages->pageSize(0, &width, &height)) {
    line += ", " + counted(static_cast<u32>(pages->pageCount()), "page") + ", the first " +
            std::to_string(std::lround(width * kMillimetresPerPoint)) + " by " +
            std::to_string(std::lround(height * kMillimetresPerPoint)) + " mm";
  }
  if (const ITextSource* const text = query<ITextSource>(&document))
    line += ", " + counted(text->lineCount(), "line") + ", " + counted(text->textLength(), "unit");
  if (IOutline* const outline = query<IOutline>(&document))
    line += ", " + counted(static_cast<u32>(outline->headingCount()), "heading");
  if (document.isReadOnly()) line += ", read-only";
  std::printf("%s\n", line.c_str());
}

IDocManager* managerOf(IShell& shell) {
  IDocManager* const documents = shell.docManager();
  if (!documents) std::fprintf(stderr, "corvix-host: there is no document manager: see `corvix-host list`.\n");
  return documents;
}

int openAll(IShell& shell, const Texts& locations) {
  IDocManager* const documents = managerOf(shell);
  if (!documents) return 1;
  int failures = 0;
  const ShellDisplay display(shell);
  for (const std::string& location : locations) {
    IDocument* const document = documents->openDocument(wide(location).c_str());
    printReport(*documents);
    if (document) {
      describe(*shell.pluginManager(), *document);
    } else {
      ++failures;
    }
  }
  while (IDocument* const document = documents->documentAt(0)) {
    if (!documents->closeDocument(document)) break;
  }
  return failures ? 1 : 0;
}

int convert(IShell& shell, const std::string& from, const std::string& to) {
  IDocManager* const documents = managerOf(shell);
  if (!documents) return 1;
  const ShellDisplay display(shell);
  IDocument* const document = documents->openDocument(wide(from).c_str());
  printReport(*documents);
  if (!document) return 1;
  const std::wstring before = document->location();
  const bool isDone = documents->saveDocumentAs(document, wide(to).c_str(), nullptr);
  printReport(*documents);
  // One that has moved there is of that format now; by others, that are not read, a copy is made.
  const std::string format =
      before == document->location() ? "" : ", as " + formatOf(*shell.pluginManager(), *document);
  documents->closeDocument(document);
  if (isDone) std::printf("%s written%s\n", to.c_str(), format.c_str());
  return isDone ? 0 : 1;
}

}  // namespace

const Command openCommand("open", "Open documents, say what they are, and close them again",
                          {{"LOCATION", "Paths or locations, one or more", Argument::Several}},
                          [](Host& host, const Texts& given) { return openAll(host.shell(), given); });

const Command convertCommand("convert", "Open a document and save it in the format that the new name tells",
                             {{"IN", "A path or location"},
                              {"OUT", "Where to: a file of that name is replaced when the new one is complete"}},
                             [](Host& host, const Texts& given) { return convert(host.shell(), given[0], given[1]); });

}  // namespace host
