#include "shell/documents/manager/DocumentReader_p.h"

#include "core/baselib/streams/ChunkInputStream.h"
#include "shell/Locations.h"
#include "shell/Shell.h"
#include "shell/documents/manager/WatchedStreams_p.h"

#include <algorithm>

namespace corvix {

namespace {

void tell(const DeclaredFormat& format, const wchar_t* what, KReport& report) {
  report.addLine((std::wstring(format.textForUser()) + L": " + what).c_str());
}

}  // namespace

bool hasTexts(IDocument& document, const DeclaredFormat& format, KReport& report) {
  const bool all = callForeign(codeOf(&document), L"IDocument",
                               [&] { return document.location() && document.title() && document.formatName(); });
  if (!all) tell(format, L"its documents do not tell their location, title and format", report);
  return all;
}

DocumentReader::DocumentReader(IShell& shell, const DocumentPlace& place, KReport& report)
    : shell_(shell),
      place_(place),
      report_(report),
      formats_(*shell.pluginManager()),
      refused_(make<KReport>()),
      unsure_(make<KReport>()) {}

Ref<IDocument> DocumentReader::read() {
  const auto opened = Ref<IBStream>::adopt(openLocation(*shell_.pluginManager(), place_.location.c_str()));
  auto source = opened.as<BRAInputStream>();
  if (const auto forward = opened.as<BInputStream>(); forward && !source) source = make<BChunkInputStream>(forward);
  if (!source || !source->isOpen()) {
    report_.addLine(L"Nothing can be read there.");
    return {};
  }
  Candidates candidates = candidatesFor(*source);

  ShownProgress progress(shell_, source->size());
  const auto stream = make<WatchedInputStream>(source, progress, place_.location);
  struct LettingGo {
    WatchedInputStream& stream;
    ~LettingGo() { stream.letGo(); }
  } const lettingGo{*stream};

  // Of those that are equally likely the surest begins. Who is not sure leaves it to his like, not to those who know
  // nothing of such files.
  for (auto first = candidates.begin(); first != candidates.end() && !progress.isStopped();) {
    const auto last = std::find_if(first, candidates.end(),
                                   [&](const Candidate& one) { return one.likelihood != first->likelihood; });
    for (auto one = first; one != last; ++one) probe(*one, *stream);
    std::stable_sort(first, last, [](const Candidate& a, const Candidate& b) { return a.sureness > b.sureness; });
    for (; first != last; ++first) {
      if (first->sureness && !progress.isStopped()) {
        const i32 before = report_.lineCount();
        auto document = readBy(*first, *stream);
        if (document && !progress.isStopped() && settle(*first, document)) {
          tellOf(*first, before);
          return document;
        }
        if (first->isExpected()) refused_->addLines(report_, before);
      }
      first->object.reset();
    }
  }
  if (progress.isStopped()) {
    report_.clear();
    report_.addLine(L"It was stopped.");
  } else if (candidates.empty()) {
    report_.addLine(L"No format is there that could read it: plug-ins bring them.");
  }
  return {};
}

// The likeliest first.
DocumentReader::Candidates DocumentReader::candidatesFor(BRAInputStream& source) {
  u8 beginning[FormatList::kLongestMagic];
  const u32 known = readFully(source, beginning, sizeof beginning);
  Candidates candidates;
  for (const DeclaredFormat& one : formats_.all()) {
    if (!one.reads) continue;
    if (const i32 likelihood = likelihoodOf(one, beginning, known, place_.title)) {
      candidates.push_back({&one, likelihood, {}, 0});
    } else {
      tell(one, L"it neither begins nor is called as such files are", report_);
    }
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) { return a.likelihood > b.likelihood; });
  return candidates;
}

void DocumentReader::probe(Candidate& candidate, BRAInputStream& stream) {
  const i32 before = report_.lineCount();
  candidate.object = makeFormat(*candidate.format, report_);
  if (!candidate.object) {
    if (candidate.isExpected()) refused_->addLines(report_, before);
    return;
  }
  candidate.sureness = callForeign(codeOf(candidate.object.get()), L"IDocFormat", [&] {
    stream.seek(0);
    return std::clamp(candidate.object->probe(&stream), 0, 255);
  });
  if (!candidate.sureness) tell(*candidate.format, L"it is none of these", report_);
  if (candidate.isExpected()) unsure_->addLines(report_, before);
}

Ref<IDocument> DocumentReader::readBy(const Candidate& candidate, BRAInputStream& stream) {
  const i32 before = report_.lineCount();
  const auto read = callForeign(codeOf(candidate.object.get()), L"IDocFormat", [&] {
    stream.seek(0);
    return Ref<IBSmartObject>::adopt(candidate.object->readDocument(&stream, &report_));
  });
  auto document = read.as<IDocument>();
  if (!document && report_.lineCount() == before)
    tell(*candidate.format, read ? L"what it reads is no document" : L"it cannot read it", report_);
  return document;
}

// The document knows where it is from. False when it does not say so.
bool DocumentReader::settle(const Candidate& candidate, const Ref<IDocument>& document) {
  if (const auto placed = document.as<IDocumentPlace>()) {
    const bool isReadOnly = !candidate.format->writes || place_.path.empty() || !isWritable(place_.path);
    placed->setPlace(place_.location.c_str(), place_.title.c_str(), candidate.format->name(), isReadOnly);
  }
  return hasTexts(*document, *candidate.format, report_);
}

// Of the report stays what matters once there is a document; what its format said begins at that line.
void DocumentReader::tellOf(const Candidate& candidate, i32 firstLine) {
  if (!candidate.isExpected()) refused_->addLines(*unsure_, 0);
  const auto told = make<KReport>();
  if (refused_->lineCount())
    told->addLine(
        (quoted(place_.title) + L" was opened as " + std::wstring(candidate.format->textForUser()) + L'.').c_str());
  told->addLines(*refused_, 0);
  told->addLines(report_, firstLine);
  report_.take(*told);
}

}  // namespace corvix
