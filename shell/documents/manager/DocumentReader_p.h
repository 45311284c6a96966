// DocumentReader: opens a file by the formats that may read it, the likeliest first. [shell thread]
#pragma once

#include "core/baselib/objects/Ref.h"
#include "shell/documents/Document.h"
#include "shell/documents/manager/DocumentPlace_p.h"
#include "shell/documents/manager/FormatList_p.h"
#include "shell/services/KReport_p.h"

namespace corvix {

class BRAInputStream;
class IShell;
class WatchedInputStream;

class DocumentReader {
 public:
  // `report` gets what there is to say; all outlive the reader.
  DocumentReader(IShell& shell, const DocumentPlace& place, KReport& report);

  // Null when nobody could read it, or the user stopped it: the report has what each format said. Of a document the
  // report has only why those that should have read it did not, and what the one that did had to say.
  Ref<IDocument> read();

 private:
  struct Candidate {
    const DeclaredFormat* format;
    i32 likelihood;
    Ref<IDocFormat> object;
    i32 sureness;

    // By the name of the file, or how it begins: the user would have this one open it.
    bool isExpected() const noexcept { return likelihood >= static_cast<i32>(Likelihood::Pattern); }
  };
  using Candidates = std::vector<Candidate>;

  Candidates candidatesFor(BRAInputStream& source);
  void probe(Candidate& candidate, BRAInputStream& stream);
  Ref<IDocument> readBy(const Candidate& candidate, BRAInputStream& stream);
  bool settle(const Candidate& candidate, const Ref<IDocument>& document);
  void tellOf(const Candidate& candidate, i32 firstLine);

  IShell& shell_;
  const DocumentPlace& place_;
  KReport& report_;
  const FormatList formats_;
  const Ref<KReport> refused_, unsure_;  // what expected ones said who could not, and who were not sure
};

// What is shown and compared; a document has all of them, empty or not. Else the report says so.
bool hasTexts(IDocument& document, const DeclaredFormat& format, KReport& report);

}  // namespace corvix
